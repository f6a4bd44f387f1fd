#include "base/four_char_code.h"

#include <gtest/gtest.h>

namespace purlock {
namespace {

static_assert(fourCharCode("dOut") == 0x644F7574);
static_assert(fourCharCode("glob") == 0x676C6F62);
static_assert(fourCharCode("outp") == 0x6F757470);
static_assert(fourCharCode("uid ") == 0x75696420);
static_assert(fourCharCode("\xFF\xFE\xFD\xFC") == 0xFFFEFDFC, "bytes count as unsigned");

TEST(FourCharCode, IsKnownWhenTheProgramIsBuilt) {
    constexpr std::uint32_t code = fourCharCode("prs#");
    EXPECT_EQ(code, 0x70727323U);
}

}  // namespace
}  // namespace purlock
