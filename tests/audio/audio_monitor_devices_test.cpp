// The device list and the choice of the device.

#include <gtest/gtest.h>

#include "tests/audio/monitor_fixture.h"

namespace purlock {
namespace {

using Devices = std::vector<AvailableDevice>;
using History = std::vector<Devices>;
using test::globalScope;
using test::MonitorFixture;
using test::outputScope;

class AudioMonitorDevices : public testing::Test, protected MonitorFixture {};

const AvailableDevice deskEntry{50, "Desk", "desk-1"};
const AvailableDevice cansEntry{60, "Cans", "cans-1"};

TEST_F(AudioMonitorDevices, NothingIsReadBeforeTheStart) {
    settle();
    EXPECT_TRUE(hardware.takeReads().empty());
    EXPECT_TRUE(hardware.listeners().empty());
    EXPECT_EQ(monitor->state().value(), std::nullopt);
    EXPECT_TRUE(monitor->availableDevices().value().empty());
}

TEST_F(AudioMonitorDevices, TheMainThreadNeverAsksTheLayer) {
    monitor->start();
    monitor->refreshDevices();
    monitor->refreshState();
    pin->setPinnedDeviceUID("cans-1");
    EXPECT_TRUE(hardware.takeReads().empty());
    EXPECT_TRUE(hardware.listeners().empty());
    queues.run();
    EXPECT_FALSE(hardware.takeReads().empty());
    loop.runUntilIdle();
    EXPECT_TRUE(hardware.takeReads().empty()) << "what was read is only published here";
    EXPECT_EQ(monitor->state().value()->deviceID, 60U);
}

TEST_F(AudioMonitorDevices, WhileTheQueueIsHeldUpOneRefreshWaits) {
    start();
    states.clear();
    for (int i = 0; i < 10; ++i) monitor->refreshState();
    settle();
    EXPECT_EQ(states.size(), 1U);
    monitor->refreshState();
    settle();
    EXPECT_EQ(states.size(), 2U);
}

TEST_F(AudioMonitorDevices, ARefreshThatWaitsDoesNotHideANewPin) {
    start();
    monitor->refreshState();
    pin->setPinnedDeviceUID("cans-1");
    settle();
    EXPECT_EQ(monitor->state().value()->deviceID, 60U);
}

TEST_F(AudioMonitorDevices, TheQueueCarriesTheApplicationsLabel) {
    ASSERT_EQ(queues.made().size(), 1U);
    EXPECT_EQ(queues.made()[0]->label(), std::string(applicationIdentifier) + ".purlock.audiomonitor");
}

TEST_F(AudioMonitorDevices, TheStartPublishesTheListAndThenTheState) {
    monitor->start();
    EXPECT_TRUE(events.empty()) << "values are published later, on the main thread";
    settle();
    EXPECT_EQ(events, (std::vector<std::string>{"list", "state"}));
    EXPECT_EQ(lists, History({{deskEntry, cansEntry}}));
    EXPECT_EQ(states.front()->deviceID, 50U);
}

struct ListRow {
    const char* name;
    void (*prepare)(MonitorFixture&);
    std::optional<Devices> published;  // absent: nothing is
};

TEST(AudioMonitorDeviceList, Rows) {
    const ListRow rows[] = {
        {"both, in the layer's order",
         [](auto& f) {
             f.setDevices({60, 50});
         },
         Devices{cansEntry, deskEntry}},
        {"input streams only",
         [](auto& f) { f.hardware.setObjects(50, kAudioDevicePropertyStreams, outputScope, {}); },
         Devices{cansEntry}},
        {"streams cannot be asked",
         [](auto& f) { f.hardware.refuseSize(50, kAudioDevicePropertyStreams, outputScope); },
         Devices{cansEntry}},
        {"a size below one id still counts as streams",
         [](auto& f) { f.hardware.setBytes(50, kAudioDevicePropertyStreams, outputScope, {1}); },
         Devices{deskEntry, cansEntry}},
        {"name unreadable", [](auto& f) { f.hardware.refuseData(50, kAudioObjectPropertyName, globalScope); },
         Devices{{50, "Unknown", "desk-1"}, cansEntry}},
        {"name null", [](auto& f) { f.hardware.setText(50, kAudioObjectPropertyName, std::nullopt); },
         Devices{{50, "Unknown", "desk-1"}, cansEntry}},
        {"an empty name is a name", [](auto& f) { f.hardware.setText(50, kAudioObjectPropertyName, ""); },
         Devices{{50, "", "desk-1"}, cansEntry}},
        {"UID unreadable",
         [](auto& f) { f.hardware.refuseData(50, kAudioDevicePropertyDeviceUID, globalScope); },
         Devices{{50, "Desk", ""}, cansEntry}},
        {"UID null", [](auto& f) { f.hardware.setText(50, kAudioDevicePropertyDeviceUID, std::nullopt); },
         Devices{{50, "Desk", ""}, cansEntry}},
        {"a device twice",
         [](auto& f) {
             f.setDevices({50, 50});
         },
         Devices{deskEntry, deskEntry}},
        {"a device that has vanished",
         [](auto& f) {
             f.setDevices({50, 99});
         },
         Devices{deskEntry}},
        {"no devices", [](auto& f) { f.setDevices({}); }, Devices{}},
        {"less than one id",
         [](auto& f) {
             f.hardware.setBytes(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope,
                                 {50, 0, 0});
         },
         Devices{}},
        {"one id and a half",
         [](auto& f) {
             f.hardware.setBytes(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope,
                                 {50, 0, 0, 0, 60, 0});
         },
         Devices{deskEntry}},
        {"the list shrinks after its size was said",
         [](auto& f) {
             f.hardware.lieAboutSize(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope,
                                     4000);
         },
         Devices{deskEntry, cansEntry}},
        {"the largest size that is believed",
         [](auto& f) {
             f.hardware.lieAboutSize(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope,
                                     4 * 65536);
         },
         Devices{deskEntry, cansEntry}},
        {"one device more",
         [](auto& f) {
             f.hardware.lieAboutSize(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope,
                                     4 * 65537);
         },
         std::nullopt},
        {"a size beyond all reason",
         [](auto& f) {
             f.hardware.lieAboutSize(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope,
                                     ~0U);
         },
         std::nullopt},
        {"size refused",
         [](auto& f) {
             f.hardware.refuseSize(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope);
         },
         std::nullopt},
        {"data refused",
         [](auto& f) {
             f.hardware.refuseData(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope);
         },
         std::nullopt},
    };
    for (const ListRow& row : rows) {
        SCOPED_TRACE(row.name);
        MonitorFixture f;
        row.prepare(f);
        f.monitor->refreshDevices();
        f.settle();
        if (row.published) {
            EXPECT_EQ(f.lists, History({*row.published}));
        } else {
            EXPECT_TRUE(f.lists.empty());
        }
    }
}

TEST_F(AudioMonitorDevices, AListThatCannotBeReadLeavesTheOldOne) {
    start();
    hardware.refuseSize(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope);
    monitor->refreshDevices();
    settle();
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_EQ(monitor->findDeviceByUID("cans-1"), 60U);
    pin->setPinnedDeviceUID("cans-1");
    EXPECT_EQ(refreshed()->uid, "cans-1") << "also for the choice of the device";
}

TEST_F(AudioMonitorDevices, AnEqualListIsPublishedAgain) {
    start();
    monitor->refreshDevices();
    settle();
    EXPECT_EQ(lists, History({{deskEntry, cansEntry}, {deskEntry, cansEntry}}));
}

TEST_F(AudioMonitorDevices, ADeviceIsFoundByItsExactUID) {
    EXPECT_EQ(monitor->findDeviceByUID("desk-1"), std::nullopt) << "the list is empty before the first read";
    hardware.setText(60, kAudioDevicePropertyDeviceUID, "desk-1");
    start();
    EXPECT_EQ(monitor->findDeviceByUID("desk-1"), 50U) << "the first in list order";
    EXPECT_EQ(monitor->findDeviceByUID("Desk-1"), std::nullopt);
    EXPECT_EQ(monitor->findDeviceByUID("desk-"), std::nullopt);
    EXPECT_EQ(monitor->findDeviceByUID(""), std::nullopt);
}

struct ChoiceRow {
    const char* name;
    std::optional<std::string> pin;
    AudioObjectID defaultDevice;
    std::optional<AudioObjectID> chosen;
};

TEST(AudioMonitorDeviceChoice, Rows) {
    const ChoiceRow rows[] = {
        {"no pin: the default", {}, 50, 50},
        {"the pin beats the default", "cans-1", 50, 60},
        {"the pin is the default", "desk-1", 50, 50},
        {"a pin that is not there", "unplugged", 60, 60},
        {"an empty pin is ignored", "", 60, 60},
        {"letter case counts", "Cans-1", 50, 50},
        {"no default, no pin", {}, 0, {}},
        {"no default, a pin", "cans-1", 0, 60},
        {"no default, a pin that is not there", "unplugged", 0, {}},
    };
    for (const ChoiceRow& row : rows) {
        SCOPED_TRACE(row.name);
        MonitorFixture f;
        f.setDefault(row.defaultDevice);
        f.pin->setPinnedDeviceUID(row.pin);
        f.start();
        const auto& state = f.monitor->state().value();
        ASSERT_EQ(state.has_value(), row.chosen.has_value());
        if (state) {
            EXPECT_EQ(state->deviceID, *row.chosen);
        }
        EXPECT_EQ(f.pin->pinnedDeviceUID().value(), row.pin) << "the pin is never cleared here";
    }
}

TEST_F(AudioMonitorDevices, APinThatIsFoundSparesTheReadOfTheDefault) {
    start();
    hardware.takeReads();
    pin->setPinnedDeviceUID("cans-1");
    settle();
    EXPECT_EQ(monitor->state().value()->deviceID, 60U);
    for (const auto& read : hardware.takeReads()) {
        EXPECT_NE(read.selector, kAudioHardwarePropertyDefaultOutputDevice);
    }
}

TEST_F(AudioMonitorDevices, ADefaultThatCannotBeReadIsNone) {
    hardware.refuseData(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice, globalScope);
    start();
    EXPECT_EQ(states, std::vector<std::optional<DeviceState>>{std::nullopt});
}

TEST_F(AudioMonitorDevices, SettingThePinRefreshesAtOnce) {
    start();
    pin->setPinnedDeviceUID("cans-1");
    settle();
    EXPECT_EQ(monitor->state().value()->deviceID, 60U);
    pin->setPinnedDeviceUID(std::nullopt);
    settle();
    EXPECT_EQ(monitor->state().value()->deviceID, 50U);
    EXPECT_EQ(states.size(), 3U);
}

TEST_F(AudioMonitorDevices, TheStartTakesOverThePinsCallback) {
    int old = 0;
    pin->setOnPinnedDeviceChange([&](const auto&) { ++old; });
    start();
    pin->setPinnedDeviceUID("cans-1");
    EXPECT_EQ(old, 0);
}

TEST_F(AudioMonitorDevices, APinnedDeviceThatIsPluggedInIsTakenWithTheNextList) {
    pin->setPinnedDeviceUID("new-1");
    start();
    test::FakeDevice{70,    "New", "new-1", 71, test::floatStream(48000), test::integerStream(48000, 16),
                     false, 0}
        .addTo(hardware);
    setDevices({50, 60, 70});
    EXPECT_EQ(refreshed()->deviceID, 50U) << "the list has not been read again";
    notify(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
    EXPECT_EQ(monitor->state().value()->deviceID, 70U);
}

}  // namespace
}  // namespace purlock
