#include "base/number_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace purlock {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(NumberText, RatesAreWhatTheCLibraryPrints) {
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

TEST(NumberText, Shortest) {
    struct Row {
        double value;
        const char* text;
    };
    const Row rows[] = {
        {44100, "44100.0"},
        {100000, "100000.0"},
        {44100.5, "44100.5"},
        {0, "0.0"},
        {-0.0, "-0.0"},
        {0.1, "0.1"},
        {1e15, "1000000000000000.0"},
        {1e16, "1e+16"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1.0 / 3, "0.3333333333333333"},
        {infinity, "inf"},
        {notANumber, "nan"},
        {-48000, "-48000.0"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(shortestText(row.value), row.text);
    }
}

TEST(NumberText, Truncated) {
    EXPECT_EQ(truncatedInteger(999.9), 999);
    EXPECT_EQ(truncatedInteger(-999.9), -999);
    EXPECT_EQ(truncatedInteger(-0.5), 0);
    EXPECT_EQ(truncatedInteger(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(truncatedInteger(9223372036854774784.0), 9223372036854774784);
}

TEST(NumberTextDeathTest, WhatHasNoIntegerFormStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const double value :
         {infinity, -infinity, notANumber, 9223372036854775808.0, -9223372036854777856.0}) {
        SCOPED_TRACE(value);
        EXPECT_DEATH(static_cast<void>(truncatedInteger(value)),
                     "purlock: a number that has no integer form");
    }
}

TEST(NumberText, Rates) {
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

TEST(NumberText, BitRates) {
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

TEST(NumberText, DoesNotFollowTheLocale) {
    // Desktop toolkits set the user's locale; a decimal comma must not reach the texts.
    const char* const found = [] {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8", "C.UTF-8"}) {
            if (std::setlocale(LC_ALL, name) != nullptr) return name;
        }
        return "C";
    }();
    SCOPED_TRACE(found);
    EXPECT_EQ(rateText(44100), "44.1 kHz");
    EXPECT_EQ(shortestText(0.5), "0.5");
    std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace purlock
