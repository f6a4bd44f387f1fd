#include "platform/linux/alsa/sound_cards.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/recorded_cards.h"
#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

class SoundCardsTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const test::RecordedCards recorded{folder.path()};
    const SoundCards cards{folder.path()};
};

TEST_F(SoundCardsTest, AnOpenPcmNamesTheProcessOfItsThread) {
    recorded.openPcm("card1/pcm0p", 4712, "S24_3LE", 96000);
    recorded.addThread(4712, 4700, "player");
    const PcmInfo view = cards.pcm({1, 0, 0});
    EXPECT_EQ(view.status.state, PcmState::running);
    ASSERT_TRUE(view.parameters);
    EXPECT_EQ(view.parameters->sampleRate, 96000);
    EXPECT_EQ(view.parameters->layout.bits, 24U);
    EXPECT_EQ(view.owner, (PcmOwner{4700, "player"}));
}

TEST_F(SoundCardsTest, ClosedMissingAndForeignFiles) {
    recorded.addClosedPcm("card0/pcm0p");
    recorded.openPcm("card0/pcm1p", 99, "S16_LE", 44100);  // whose thread has ended
    std::filesystem::create_directories(recorded.folder() + "/asound/card0/pcm2p/sub0/status");
    std::filesystem::create_directories(recorded.folder() + "/asound/card0/pcm3p/sub0");
    ::mkfifo((recorded.folder() + "/asound/card0/pcm3p/sub0/status").c_str(), 0600);
    EXPECT_EQ(cards.pcm({0, 0, 0}), PcmInfo{});
    EXPECT_EQ(cards.pcm({0, 1, 0}).owner, std::nullopt);
    EXPECT_EQ(cards.pcm({0, 2, 0}), PcmInfo{}) << "a folder";
    EXPECT_EQ(cards.pcm({0, 3, 0}), PcmInfo{}) << "a pipe that nobody writes to";
    EXPECT_EQ(cards.pcm({7, 0, 0}), PcmInfo{}) << "no such card";
}

TEST_F(SoundCardsTest, AFileWithoutAnEndIsReadInPart) {
    recorded.write("asound/card0/pcm0p/sub0/status", "state: RUNNING\n" + std::string(1 << 20, 'x'));
    EXPECT_EQ(cards.pcm({0, 0, 0}).status.state, PcmState::running);
}

TEST_F(SoundCardsTest, TheMonitorOfADisplayPcm) {
    EXPECT_EQ(cards.displayConnection({0, 3, 0}, "HDMI"), EldConnection::unknown);
    recorded.write("asound/card0/eld#2.0", "monitor_present\t\t0\neld_valid\t\t0\n");
    recorded.addMonitor("card0/eld#2.1", "DisplayPort", "DELL U2720Q");
    EXPECT_EQ(cards.displayConnection({0, 3, 0}, "HDMI"), EldConnection::displayPort) << "the only one";
    recorded.addMonitor("card0/eld#2.0", "HDMI", "LG TV SSCR2");
    EXPECT_EQ(cards.displayConnection({0, 7, 0}, "Sound to DELL U2720Q"), EldConnection::displayPort)
        << "by name";
    EXPECT_EQ(cards.displayConnection({0, 7, 0}, "Sound to LG TV SSCR2"), EldConnection::hdmi) << "by name";
    EXPECT_EQ(cards.displayConnection({0, 3, 0}, ""), EldConnection::hdmi) << "by place: the first PCM";
    EXPECT_EQ(cards.displayConnection({0, 7, 0}, ""), EldConnection::displayPort)
        << "by place: the second PCM";
}

}  // namespace
}  // namespace purlock::host_linux
