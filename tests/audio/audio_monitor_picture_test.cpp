// A refresh on a hardware layer that can hold a picture still and knows the mixer's work.

#include <gtest/gtest.h>

#include "tests/audio/monitor_fixture.h"

namespace purlock {
namespace {

using test::integerStream;
using test::MonitorFixture;

class AudioMonitorPicture : public testing::Test, protected MonitorFixture {};

TEST_F(AudioMonitorPicture, ARefreshReadsOnePictureFromItsFirstReadToItsLast) {
    hardware.holdPicturesStill();
    start();
    const auto before = monitor->state().value();
    // The layer moves on in the middle of the refresh.
    hardware.onRead([this](AudioObjectID, std::uint32_t selector) {
        if (selector != kAudioStreamPropertyVirtualFormat) return;
        hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, integerStream(96000, 16));
        hardware.setValue(50, kAudioDevicePropertyTransportType, kAudioDeviceTransportTypeUSB);
    });
    EXPECT_EQ(refreshed(), before);
    EXPECT_EQ(refreshed()->physicalFormat->sampleRate, 96000) << "the next one sees it";
}

TEST_F(AudioMonitorPicture, TheMixersWorkIsThatOfTheChosenDevice) {
    const MixerWork work{{alteration::DeviceVolume{"Desk", 0.4}}};
    hardware.setMixerWork(50, work);
    hardware.setMixerWork(60, {});
    start();
    EXPECT_EQ(monitor->state().value()->mixerWork, work);
    pin->setPinnedDeviceUID("cans-1");
    settle();
    EXPECT_EQ(monitor->state().value()->mixerWork, MixerWork{});
}

TEST_F(AudioMonitorPicture, ALayerThatCannotKnowGivesNone) {
    start();
    EXPECT_EQ(monitor->state().value()->mixerWork, std::nullopt);
}

TEST_F(AudioMonitorPicture, ThePinIsKnownBeforeTheStart) {
    pin->setPinnedDeviceUID("cans-1");
    make();
    monitor->refreshDevices();
    monitor->refreshState();
    settle();
    EXPECT_EQ(monitor->state().value()->uid, "cans-1");
}

}  // namespace
}  // namespace purlock
