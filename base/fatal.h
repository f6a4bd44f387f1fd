#pragma once

#include <string_view>

namespace purlock {

/// Stops the process, with `reason` on standard error. For the few conditions under which it cannot go on.
[[noreturn]] void fatalStop(std::string_view reason);

}  // namespace purlock
