#include "core/rate_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace purlock {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(RateText, IsWhatTheCLibraryPrints) {
    std::mt19937_64 random(1);  // NOLINT(bugprone-random-generator-seed): the same numbers in each run
    std::uniform_real_distribution<double> exponent(-8, 20);
    const auto printed = [](double value, int decimals, const char* unit) {
        char text[64];
        std::snprintf(text, sizeof text, "%.*f %s", decimals, value, unit);
        return std::string(text);
    };
    for (int i = 0; i < 100000; ++i) {
        const double value = std::pow(10, exponent(random));
        ASSERT_EQ(bitRateText(value), value >= 1'000'000 ? printed(value / 1'000'000, 2, "Mbps")
                                                         : printed(value / 1000, 0, "kbps"));
        if (value >= 1000) {
            ASSERT_EQ(rateText(value), printed(value / 1000, 1, "kHz"));
        }
    }
}

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
