#pragma once

namespace purlock {

/// Makes one visitor of several lambdas, one for each case of a `std::variant`.
template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

}  // namespace purlock
