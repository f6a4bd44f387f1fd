#include <filesystem>
#include <fstream>

#include "tests/host-linux/pipewire/hardware/audio_test.h"
#include "tests/support/recorded_cards.h"

namespace purlock {
namespace {

using test::AudioTest;
using test::waitUntil;

/// A sink that says of itself that it is ALSA hardware, and a card that exists in files only.
class Exclusive : public AudioTest {
  protected:
    void SetUp() override {
        AudioTest::SetUp();
        hardware.reset();
        std::filesystem::create_directories(session.folder() + "/snd");
        std::ofstream(session.folder() + "/snd/pcmC1D0p") << "device";
        cards.addClosedPcm("card1/pcm0p");
        hardware = std::make_unique<host_linux::PipeWireHardware>(
            applications, host_linux::PipeWireHardware::Places{cards.folder(), session.folder() + "/snd"});
        ASSERT_TRUE(session.loadNullSink("dac", 48000,
                                         "'api.alsa.pcm.card=1 api.alsa.pcm.device=0 device.api=alsa'"));
        ASSERT_TRUE(waitUntil([&] {
            return observer().physicalRate(observer().deviceByUID("dac")) == 48000;
        })) << session.logs();
    }

    /// What a program causes that opens or closes the device.
    void touchDevice() { std::ifstream(session.folder() + "/snd/pcmC1D0p").get(); }

    test::RecordedCards cards{session.folder() + "/proc"};
};

TEST_F(Exclusive, AProgramThatTakesTheHardwareAndGivesItBack) {
    const AudioObjectID device = observer().deviceByUID("dac");
    cards.addThread(4712, 4700, "player");
    cards.openPcm("card1/pcm0p", 4712, "S24_3LE", 96000);
    touchDevice();
    EXPECT_TRUE(waitUntil([&] { return observer().virtualRate(device) == 96000; }));
    EXPECT_TRUE(observer().isRunning(device));
    EXPECT_EQ(observer().format(device, kAudioStreamPropertyVirtualFormat)->bitsPerChannel, 24U);
    EXPECT_EQ(observer().physicalRate(device), 96000);
    const AudioObjectID owner = observer().processByPID(4700);
    EXPECT_TRUE(observer().plays(owner));
    EXPECT_EQ(observer().text(owner, kAudioProcessPropertyBundleID), "process.4700");
    EXPECT_EQ(observer().ids(owner, kAudioProcessPropertyDevices), std::vector{device});

    // No event tells of a pause; the next read finds it.
    cards.openPcm("card1/pcm0p", 4712, "S24_3LE", 96000, "PAUSED");
    EXPECT_TRUE(waitUntil([&] { return !observer().isRunning(device); }));

    cards.addClosedPcm("card1/pcm0p");
    touchDevice();
    EXPECT_TRUE(waitUntil(
        [&] { return observer().processes().empty() && observer().physicalRate(device) == 48000; }));
    EXPECT_EQ(observer().format(device, kAudioStreamPropertyVirtualFormat)->bitsPerChannel, 32U);
}

}  // namespace
}  // namespace purlock
