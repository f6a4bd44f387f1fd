#include "base/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

#include "base/fatal.h"
#include "base/text.h"

namespace purlock {

namespace {

// The longest double in fixed notation has 309 digits before the point; a few more for sign, point and
// decimals.
using NumberBuffer = std::array<char, 352>;

/// As "%.*f" prints it, in every locale. The buffer has room for at most 40 decimals.
std::string_view fixedInto(NumberBuffer& buffer, double value, int decimals) {
    // A NaN's sign bit means nothing; printed, it would look as if it did.
    if (std::isnan(value)) return "nan";
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, decimals);
    return {buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data())};
}

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

std::string rateText(double hertz) {
    NumberBuffer buffer;
    if (hertz >= 1000) return joined({fixedInto(buffer, hertz / 1000, 1), " kHz"});
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), truncatedInteger(hertz));
    return joined({{buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data())}, " Hz"});
}

std::string bitRateText(double bitsPerSecond) {
    NumberBuffer buffer;
    const double megabits = bitsPerSecond / 1'000'000;
    if (megabits >= 1.0) return joined({fixedInto(buffer, megabits, 2), " Mbps"});
    return joined({fixedInto(buffer, bitsPerSecond / 1000, 0), " kbps"});
}

}  // namespace purlock
