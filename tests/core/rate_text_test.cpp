#include "core/rate_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace purlock {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(RateText, SampleRates) {
    struct Row {
        double rate;
        const char* text;
    };
    const Row rows[] = {
        {44100, "44.1 kHz"},   {1000, "1.0 kHz"}, {999.9, "999 Hz"},
        {-44100, "-44100 Hz"}, {1250, "1.2 kHz"}, {infinity, "inf kHz"},
    };
    for (const Row& row : rows) EXPECT_EQ(rateText(row.rate), row.text);
    constexpr double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(rateText(largest).size(), 312U) << "306 digits before the point";
}

TEST(RateText, BitRates) {
    struct Row {
        double rate;
        const char* text;
    };
    const Row rows[] = {
        {1411200, "1.41 Mbps"},    {1000000, "1.00 Mbps"}, {1005000, "1.00 Mbps"},   {999999, "1000 kbps"},
        {128000, "128 kbps"},      {2500, "2 kbps"},       {3500, "4 kbps"},         {0, "0 kbps"},
        {-2, "-0 kbps"},           {infinity, "inf Mbps"}, {-infinity, "-inf kbps"}, {notANumber, "nan kbps"},
        {-notANumber, "nan kbps"},
    };
    for (const Row& row : rows) EXPECT_EQ(bitRateText(row.rate), row.text);
}

}  // namespace
}  // namespace purlock
