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

TEST(NumberText, Fixed) {
    struct Row {
        double value;
        int decimals;
        const char* text;
    };
    const Row rows[] = {
        {44.1, 1, "44.1"},       {0.25, 1, "0.2"},       {0.35, 1, "0.3"},
        {1.005, 2, "1.00"},      {-0.04, 1, "-0.0"},     {0, 0, "0"},
        {2.5, 0, "2"},           {3.5, 0, "4"},          {1e22, 0, "10000000000000000000000"},
        {infinity, 1, "inf"},    {-infinity, 1, "-inf"}, {notANumber, 2, "nan"},
        {-notANumber, 2, "nan"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.value << " to " << row.decimals);
        EXPECT_EQ(fixedText(row.value, row.decimals), row.text);
    }
    EXPECT_EQ(fixedText(std::numeric_limits<double>::max(), 2).size(), 312U);
}

TEST(NumberText, FixedPrintsWhatTheCLibraryPrints) {
    std::mt19937_64 random(1);  // NOLINT(bugprone-random-generator-seed): the same numbers in each run
    std::uniform_real_distribution<double> exponent(-8, 20);
    for (int i = 0; i < 100000; ++i) {
        const double value = std::pow(10, exponent(random));
        for (const int decimals : {0, 1, 2}) {
            char expected[64];
            std::snprintf(expected, sizeof expected, "%.*f", decimals, value);
            ASSERT_EQ(fixedText(value, decimals), expected);
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
    EXPECT_EQ(rateText(44100), "44.1 kHz");
    EXPECT_EQ(rateText(1000), "1.0 kHz");
    EXPECT_EQ(rateText(999.9), "999 Hz");
    EXPECT_EQ(rateText(-44100), "-44100 Hz");
    EXPECT_EQ(bitRateText(1411200), "1.41 Mbps");
    EXPECT_EQ(bitRateText(1000000), "1.00 Mbps");
    EXPECT_EQ(bitRateText(999999), "1000 kbps");
    EXPECT_EQ(bitRateText(128000), "128 kbps");
    EXPECT_EQ(bitRateText(0), "0 kbps");
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
