#include "base/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "base/fatal.h"
#include "base/text.h"

namespace purlock {

namespace {

// The longest double in fixed notation has 309 digits before the point; a few more for sign, point and
// decimals.
using NumberBuffer = std::array<char, 352>;

}  // namespace

std::int64_t truncatedInteger(double value) {
    // Both bounds are exact doubles; the upper one, 2^63, is the first that no longer fits.
    constexpr double lowest = -9223372036854775808.0;
    constexpr double beyond = 9223372036854775808.0;
    if (!(value >= lowest && value < beyond)) fatalStop("a number that has no integer form");
    return static_cast<std::int64_t>(value);
}

std::string shortestText(double value) {
    if (std::isnan(value)) return "nan";
    NumberBuffer buffer;
    const double magnitude = std::fabs(value);
    const bool plain = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e16);
    const auto notation = plain ? std::chars_format::fixed : std::chars_format::scientific;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, notation);
    std::string text(buffer.data(), result.ptr);
    if (plain && !contains(text, ".")) text += ".0";
    return text;
}

std::string fixedText(double value, int decimals) {
    // A NaN's sign bit means nothing; printed, it would look as if it did.
    if (std::isnan(value)) return "nan";
    NumberBuffer buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, std::clamp(decimals, 0, 9));
    return {buffer.data(), result.ptr};
}

}  // namespace purlock
