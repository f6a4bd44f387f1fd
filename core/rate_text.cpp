#include "core/rate_text.h"

#include "base/number_text.h"

namespace purlock {

std::string rateText(double hertz) {
    if (hertz >= 1000) return fixedText(hertz / 1000, 1) + " kHz";
    return std::to_string(truncatedInteger(hertz)) + " Hz";
}

std::string bitRateText(double bitsPerSecond) {
    const double megabits = bitsPerSecond / 1'000'000;
    if (megabits >= 1.0) return fixedText(megabits, 2) + " Mbps";
    return fixedText(bitsPerSecond / 1000, 0) + " kbps";
}

}  // namespace purlock
