// One refresh of the device's state.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/audio/monitor_fixture.h"

namespace purlock {
namespace {

using test::floatStream;
using test::globalScope;
using test::MonitorFixture;
using test::outputScope;

class AudioMonitorState : public testing::Test, protected MonitorFixture {};

TEST_F(AudioMonitorState, EveryFieldComesFromItsProperty) {
    start();
    DeviceState expected;
    expected.deviceID = 50;
    expected.name = "Desk";
    expected.uid = "desk-1";
    expected.virtualFormat = AudioFormat{48000, 32, 2, 9, formatLinearPCM};
    expected.physicalFormat = AudioFormat{48000, 24, 2, 12, formatLinearPCM};
    expected.transportType = DeviceTransport::hdmi;
    EXPECT_EQ(monitor->state().value(), expected);
}

struct TransportRow {
    const char* code;
    DeviceTransport expected;
};

TEST_F(AudioMonitorState, TransportCodes) {
    const TransportRow rows[] = {
        {"usb ", DeviceTransport::usb},         {"blue", DeviceTransport::bluetooth},
        {"blea", DeviceTransport::bluetooth},   {"airp", DeviceTransport::airplay},
        {"hdmi", DeviceTransport::hdmi},        {"bltn", DeviceTransport::builtIn},
        {"grup", DeviceTransport::aggregate},   {"virt", DeviceTransport::virtualDevice},
        {"dprt", DeviceTransport::displayPort}, {"thun", DeviceTransport::unknown},
        {"1394", DeviceTransport::unknown},     {"pci ", DeviceTransport::unknown},
        {"eavb", DeviceTransport::unknown},     {"ccwd", DeviceTransport::unknown},
        {"USB ", DeviceTransport::unknown},
    };
    usb.list.set({{{"Studio", "Converter"}}});
    bluetooth.list.set({{{true, "Cans", "Cans", "AA-AA"}}});
    start();
    for (const TransportRow& row : rows) {
        SCOPED_TRACE(row.code);
        std::uint32_t code = 0;
        for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(row.code[i]);
        hardware.setValue(50, kAudioDevicePropertyTransportType, code);
        const int usbAsked = usb.list.asked();
        const int bluetoothAsked = bluetooth.list.asked();
        const auto state = refreshed();
        const bool isUSB = row.expected == DeviceTransport::usb;
        const bool isBluetooth = row.expected == DeviceTransport::bluetooth;
        EXPECT_EQ(state->transportType, row.expected);
        EXPECT_EQ(state->usbInfo.has_value(), isUSB);
        EXPECT_EQ(state->bluetoothInfo.has_value(), isBluetooth);
        EXPECT_EQ(usb.list.asked() - usbAsked, isUSB ? 1 : 0) << "other transports make no lookup";
        EXPECT_EQ(bluetooth.list.asked() - bluetoothAsked, isBluetooth ? 1 : 0);
    }
}

TEST_F(AudioMonitorState, LookupsUseTheUIDForUSBAndTheNameForBluetooth) {
    usb.list.set({{{"Rodent Works", "Mouse"}, {"Studio", "desk-1"}}});
    bluetooth.list.set({{{true, "Speaker", {}, "AA-AA"}, {true, "DESK", {}, "BB-BB"}}});
    start();
    hardware.setValue(50, kAudioDevicePropertyTransportType, kAudioDeviceTransportTypeUSB);
    EXPECT_EQ(refreshed()->usbInfo, (USBDeviceInfo{"Studio", "desk-1", "USB Audio", {}}));
    hardware.setValue(50, kAudioDevicePropertyTransportType, kAudioDeviceTransportTypeBluetoothLE);
    EXPECT_EQ(refreshed()->bluetoothInfo, (BluetoothDeviceInfo{"DESK", "BB-BB", {}}));
}

TEST_F(AudioMonitorState, LookupsThatFindNothingLeaveTheFieldsAbsent) {
    start();
    hardware.setValue(50, kAudioDevicePropertyTransportType, kAudioDeviceTransportTypeUSB);
    EXPECT_EQ(refreshed()->usbInfo, std::nullopt);
    hardware.setValue(50, kAudioDevicePropertyTransportType, kAudioDeviceTransportTypeBluetooth);
    EXPECT_EQ(refreshed()->bluetoothInfo, std::nullopt);
}

const AudioFormat deskVirtual{48000, 32, 2, 9, formatLinearPCM};
const AudioFormat deskPhysical{48000, 24, 2, 12, formatLinearPCM};

DeviceState deskState() {
    DeviceState state;
    state.deviceID = 50;
    state.name = "Desk";
    state.uid = "desk-1";
    state.virtualFormat = deskVirtual;
    state.physicalFormat = deskPhysical;
    state.transportType = DeviceTransport::hdmi;
    return state;
}

struct FailureRow {
    const char* name;
    void (*fail)(test::FakeAudioHardware&);
    void (*expected)(DeviceState&);
};

TEST(AudioMonitorFailures, WhatCannotBeReadBecomesADefault) {
    const auto noFormats = [](DeviceState& s) {
        s.virtualFormat.reset();
        s.physicalFormat.reset();
    };
    const FailureRow rows[] = {
        {"nothing fails", [](auto&) {}, [](auto&) {}},
        {"name", [](auto& h) { h.refuseData(50, kAudioObjectPropertyName, globalScope); },
         [](auto& s) { s.name = "Unknown"; }},
        {"UID", [](auto& h) { h.refuseData(50, kAudioDevicePropertyDeviceUID, globalScope); },
         [](auto& s) { s.uid = ""; }},
        {"transport", [](auto& h) { h.refuseData(50, kAudioDevicePropertyTransportType, globalScope); },
         [](auto& s) { s.transportType = DeviceTransport::unknown; }},
        {"running flag",
         [](auto& h) { h.refuseData(50, kAudioDevicePropertyDeviceIsRunningSomewhere, globalScope); },
         [](auto& s) { s.isRunning = false; }},
        {"stream list's size", [](auto& h) { h.refuseSize(50, kAudioDevicePropertyStreams, outputScope); },
         noFormats},
        {"stream list's data", [](auto& h) { h.refuseData(50, kAudioDevicePropertyStreams, outputScope); },
         noFormats},
        {"no stream", [](auto& h) { h.setObjects(50, kAudioDevicePropertyStreams, outputScope, {}); },
         noFormats},
        {"a part of a stream's id",
         [](auto& h) { h.setBytes(50, kAudioDevicePropertyStreams, outputScope, {51}); }, noFormats},
        {"virtual format", [](auto& h) { h.refuseData(51, kAudioStreamPropertyVirtualFormat, globalScope); },
         [](auto& s) { s.virtualFormat.reset(); }},
        {"physical format",
         [](auto& h) { h.refuseData(51, kAudioStreamPropertyPhysicalFormat, globalScope); },
         [](auto& s) { s.physicalFormat.reset(); }},
        {"the stream has vanished", [](auto& h) { h.removeObject(51); }, noFormats},
        {"a rate of zero is kept",
         [](auto& h) { h.setFormat(51, kAudioStreamPropertyVirtualFormat, floatStream(0)); },
         [](auto& s) { s.virtualFormat->sampleRate = 0; }},
        {"several streams: the first",
         [](auto& h) {
             h.setObjects(50, kAudioDevicePropertyStreams, outputScope, {51, 61});
         },
         [](auto&) {}},
        {"a running flag of 2",
         [](auto& h) { h.setValue(50, kAudioDevicePropertyDeviceIsRunningSomewhere, 2); },
         [](auto& s) { s.isRunning = true; }},
        {"the device has vanished", [](auto& h) { h.removeObject(50); },
         [](auto& s) {
             s = DeviceState{};
             s.deviceID = 50;
             s.name = "Unknown";
         }},
    };
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.name);
        MonitorFixture f;
        row.fail(f.hardware);
        DeviceState expected = deskState();
        row.expected(expected);
        EXPECT_EQ(f.refreshed(), expected);
    }
}

TEST_F(AudioMonitorState, ADeviceThatVanishesInMidReadGivesDefaultsFromThere) {
    for (const std::uint32_t selector :
         {kAudioObjectPropertyName, kAudioDevicePropertyStreams, kAudioStreamPropertyVirtualFormat,
          kAudioDevicePropertyTransportType}) {
        SCOPED_TRACE(code(selector));
        MonitorFixture f;
        f.start();
        f.hardware.onRead([&](AudioObjectID, std::uint32_t read) {
            if (read == selector) {
                f.hardware.removeObject(50);
                f.hardware.removeObject(51);
            }
        });
        const auto state = f.refreshed();
        ASSERT_TRUE(state);
        EXPECT_EQ(state->name, selector == kAudioObjectPropertyName ? "Unknown" : "Desk");
        EXPECT_EQ(state->transportType, DeviceTransport::unknown);
        EXPECT_EQ(state->physicalFormat.has_value(), selector == kAudioDevicePropertyTransportType);
    }
}

struct RunningRow {
    const char* name;
    bool flag;
    std::vector<test::FakeProcess> processes;
    bool expected;
};

TEST(AudioMonitorRunning, Rows) {
    const RunningRow rows[] = {
        {"neither", false, {}, false},
        {"the device says so", true, {}, true},
        {"a process plays to it", false, {{11, 101, {}, true, {50}}}, true},
        {"a process plays elsewhere", false, {{11, 101, {}, true, {60}}}, true},
        {"a silent process", false, {{11, 101, {}, false, {50}}}, false},
        {"both", true, {{11, 101, {}, true, {50}}}, true},
    };
    for (const RunningRow& row : rows) {
        SCOPED_TRACE(row.name);
        MonitorFixture f;
        std::vector<AudioObjectID> ids;
        for (const auto& process : row.processes) {
            process.addTo(f.hardware);
            ids.push_back(process.id);
        }
        f.hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, globalScope,
                              ids);
        f.hardware.setValue(50, kAudioDevicePropertyDeviceIsRunningSomewhere, row.flag ? 1 : 0);
        EXPECT_EQ(f.refreshed()->isRunning, row.expected);
    }
}

TEST_F(AudioMonitorState, ARefreshMakesNineReadsOfTheDeviceAndNoMore) {
    start();
    hardware.takeReads();
    refreshed();
    auto reads = hardware.takeReads();
    std::erase_if(reads,
                  [](const auto& read) { return read.selector == kAudioHardwarePropertyProcessObjectList; });
    const std::vector<test::FakeAudioHardware::Read> expected = {
        {1, kAudioHardwarePropertyDefaultOutputDevice},
        {50, kAudioObjectPropertyName},
        {50, kAudioDevicePropertyDeviceUID},
        {50, kAudioDevicePropertyDeviceIsRunningSomewhere},
        {50, kAudioDevicePropertyStreams},
        {50, kAudioDevicePropertyStreams},
        {51, kAudioStreamPropertyVirtualFormat},
        {51, kAudioStreamPropertyPhysicalFormat},
        {50, kAudioDevicePropertyTransportType},
    };
    EXPECT_EQ(reads, expected);
}

TEST_F(AudioMonitorState, AnEqualStateIsPublishedAgain) {
    start();
    refreshed();
    refreshed();
    ASSERT_EQ(states.size(), 3U);
    EXPECT_EQ(states[0], states[1]);
    EXPECT_EQ(states[1], states[2]);
}

TEST_F(AudioMonitorState, ADefaultDeviceThatGoesAwayLeavesAnAbsentStateAndTheOldListeners) {
    start();
    const auto before = listened();
    setDefault(0);
    notify(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice);
    EXPECT_EQ(monitor->state().value(), std::nullopt);
    EXPECT_EQ(listened(), before);
}

}  // namespace
}  // namespace purlock
