#include "platform/linux/alsa/library_volume.h"

#include <gtest/gtest.h>

namespace purlock::host_linux {
namespace {

TEST(LibraryVolume, AScaleOfDecibelsGivesFactors) {
    struct Case {
        const char* name;
        std::int32_t least;
        std::uint32_t step;
        std::int64_t position;
        bool isLowestSilent;
        double factor;
    };
    const Case cases[] = {
        {"the top of the usual scale", -5100, 20, 255, false, 1},
        {"one step below", -5100, 20, 254, false, 0.97724},
        {"the middle of it", -5100, 20, 165, false, 0.12589},
        {"its bottom", -5100, 20, 0, false, 0.0028184},
        {"a bottom that is silence", -5100, 20, 0, true, 0},
        {"above a bottom that is silence", -5100, 20, 1, true, 0.0028840},
        {"more than unchanged", -600, 100, 12, false, 1.99526},
    };
    for (const Case& row : cases) {
        const double factor = factorOfScale(row.least, row.step, row.position, row.isLowestSilent);
        EXPECT_NEAR(factor, row.factor, 0.00001) << row.name;
        EXPECT_EQ(factor == 1, row.factor == 1) << row.name;
    }
}

TEST(LibraryVolume, ACardThatIsNotThereHasNone) {
    LibraryVolumes volumes("/nowhere");
    EXPECT_EQ(volumes.of(0), std::nullopt);
}

}  // namespace
}  // namespace purlock::host_linux
