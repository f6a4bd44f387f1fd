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

TEST(NumberText, FixedIsWhatTheCLibraryPrints) {
    std::mt19937_64 random(1);  // NOLINT(bugprone-random-generator-seed): the same numbers in each run
    std::uniform_real_distribution<double> exponent(-8, 20);
    for (int i = 0; i < 100000; ++i) {
        const double value = std::pow(10, exponent(random));
        const int decimals = i % 10;
        char printed[64];
        std::snprintf(printed, sizeof printed, "%.*f", decimals, value);
        ASSERT_EQ(fixedText(value, decimals), printed);
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

TEST(NumberText, Fixed) {
    struct Row {
        double value;
        int decimals;
        const char* text;
    };
    const Row rows[] = {
        {44.1, 1, "44.1"},      {1.25, 1, "1.2"},         {2.5, 0, "2"},
        {3.5, 0, "4"},          {-0.002, 0, "-0"},        {infinity, 2, "inf"},
        {-infinity, 0, "-inf"}, {notANumber, 1, "nan"},   {-notANumber, 1, "nan"},
        {1.5, -1, "2"},         {0.5, 60, "0.500000000"},
    };
    for (const Row& row : rows) EXPECT_EQ(fixedText(row.value, row.decimals), row.text);
    constexpr double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(fixedText(largest, 9).size(), 319U) << "309 digits before the point";
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
    EXPECT_EQ(fixedText(44.1, 1), "44.1");
    EXPECT_EQ(shortestText(0.5), "0.5");
    std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace purlock
