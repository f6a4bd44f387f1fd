#pragma once

#include <cstdint>
#include <string>

namespace purlock {

// Numbers as texts, the same in every locale. Pure functions; any thread.

/// `value` truncated toward zero. Stops the process when it is not finite or does not fit 64 bits.
std::int64_t truncatedInteger(double value);

/// The shortest decimal form that reads back as the same number, with at least one fractional digit:
/// "44100.0".
std::string shortestText(double value);

/// `value` with 0 to 9 decimals, as "%.*f" prints it; NaN without a sign. More or fewer count as 9 or 0.
std::string fixedText(double value, int decimals);

}  // namespace purlock
