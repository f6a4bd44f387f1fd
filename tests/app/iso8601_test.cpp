#include "app/iso8601.h"

#include <gtest/gtest.h>

#include <chrono>

namespace purlock {
namespace {

using namespace std::chrono_literals;

struct Row {
    std::chrono::milliseconds sinceEpoch;
    const char* text;
};

const Row rows[] = {
    {0ms, "1970-01-01T00:00:00Z"},
    {999ms, "1970-01-01T00:00:00Z"},
    {-1ms, "1969-12-31T23:59:59Z"},
    {1794697577s, "2026-11-14T23:06:17Z"},
    {1794697577999ms, "2026-11-14T23:06:17Z"},
    {951782400s, "2000-02-29T00:00:00Z"},
    {1709251199s, "2024-02-29T23:59:59Z"},
    {4102444800s, "2100-01-01T00:00:00Z"},
    {7258118399s, "2199-12-31T23:59:59Z"},
};

TEST(Iso8601, WholeSecondsInUTC) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(iso8601Text(WallTime(row.sinceEpoch)), row.text);
    }
}

}  // namespace
}  // namespace purlock
