#include "audio/process_audio.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/fake_audio_hardware.h"
#include "tests/support/fake_operating_system.h"
#include "tests/support/fake_running_applications.h"
#include "tests/support/hardware_under_test.h"
#include "tests/support/manual_queues.h"

namespace purlock {
namespace {

using ProcessAudio::RawProcess;
using test::FakeProcess;

constexpr AudioObjectID desk = 50;
constexpr AudioObjectID cans = 60;
constexpr std::uint32_t global = kAudioObjectPropertyScopeGlobal;
constexpr std::uint32_t output = kAudioObjectPropertyScopeOutput;

struct Machine {
    test::FakeAudioHardware hardware;
    test::FakeRunningApplications applications;
    test::ManualQueues queues;
    std::unique_ptr<test::HardwareUnderTest> way = test::HardwareUnderTest::make(hardware, queues);

    explicit Machine(const std::vector<FakeProcess>& processes) {
        std::vector<AudioObjectID> ids;
        for (const FakeProcess& process : processes) {
            process.addTo(hardware);
            ids.push_back(process.id);
        }
        hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global, ids);
    }

    std::optional<AudioProcessInfo> source(AudioObjectID device,
                                           OperatingSystemVersion version = {15, 3, 0}) {
        test::FakeOperatingSystem operatingSystem(version);
        auto found = ProcessAudio::currentSourceFor(device, {way->hardware(), applications, operatingSystem});
        EXPECT_EQ(ProcessAudio::hasSource(way->hardware(), operatingSystem), found.has_value());
        return found;
    }
};

const FakeProcess silent{11, 101, "org.silent", false, {desk}};
const FakeProcess onCans{12, 102, "org.cans", true, {cans}};
const FakeProcess onDesk{13, 103, "org.desk", true, {cans, desk}};
const FakeProcess alsoOnDesk{14, 104, "org.also", true, {desk}};

struct SourceRow {
    const char* name;
    std::vector<FakeProcess> processes;
    std::optional<std::int32_t> pid;
};

TEST(ProcessAudio, TheSourceOfADevice) {
    const SourceRow rows[] = {
        {"no process", {}, {}},
        {"nobody produces output", {silent}, {}},
        {"the one on the device", {onDesk}, 103},
        {"only the second is on the device", {onCans, onDesk}, 103},
        {"the first in the list that is on the device", {silent, alsoOnDesk, onDesk}, 104},
        {"nobody on the device: any that produces output", {silent, onCans}, 102},
        {"the fall-back takes the first", {onCans, {15, 105, {}, true, {cans}}}, 102},
        {"on no device at all", {{16, 106, {}, true, {}}}, 106},
        {"silent on the device, loud elsewhere", {silent, onCans}, 102},
    };
    for (const SourceRow& row : rows) {
        SCOPED_TRACE(row.name);
        Machine machine(row.processes);
        const auto source = machine.source(desk);
        ASSERT_EQ(source.has_value(), row.pid.has_value());
        if (source) {
            EXPECT_EQ(source->pid, *row.pid);
            EXPECT_TRUE(source->isRunningOutput);
        }
    }
}

TEST(ProcessAudio, BeforeProcessObjectsTheHardwareIsNotAsked) {
    struct Row {
        OperatingSystemVersion version;
        bool asked;
    };
    for (const Row& row : {Row{{14, 1, 9}, false}, Row{{13, 9, 0}, false}, Row{{14, 2, 0}, true},
                           Row{{14, 2, 1}, true}, Row{{15, 0, 0}, true}}) {
        SCOPED_TRACE(testing::Message()
                     << row.version.major << "." << row.version.minor << "." << row.version.patch);
        Machine machine({onDesk});
        EXPECT_EQ(machine.source(desk, row.version).has_value(), row.asked);
        EXPECT_EQ(machine.hardware.takeReads().empty(), !row.asked);
    }
}

struct NameRow {
    const char* name;
    std::optional<std::string> bundleID;
    std::vector<RunningApplication> running;
    std::optional<std::string> appName;
};

TEST(ProcessAudio, TheNameOfTheSource) {
    const NameRow rows[] = {
        {"localised name", "org.desk", {{103, "org.desk", "Desk Player"}}, "Desk Player"},
        {"application without a name", "org.desk", {{103, "org.other", {}}}, "org.desk"},
        {"application without any name", {}, {{103, {}, {}}}, {}},
        {"no application", "org.desk", {{999, "org.desk", "Desk Player"}}, {}},
        {"empty identifier is absent", "", {{103, {}, {}}}, {}},
    };
    for (const NameRow& row : rows) {
        SCOPED_TRACE(row.name);
        Machine machine({{13, 103, row.bundleID, true, {desk}}});
        machine.applications.setRunning(row.running);
        const auto source = machine.source(desk);
        ASSERT_TRUE(source);
        EXPECT_EQ(source->appName, row.appName);
        EXPECT_EQ(source->bundleID, row.bundleID == "" ? std::nullopt : row.bundleID);
    }
}

TEST(ProcessAudio, EveryProcessIsListedInOrder) {
    Machine machine({silent, onDesk, {17, -5, {}, false, {}}});
    EXPECT_EQ(
        ProcessAudio::audioProcesses(machine.way->hardware()),
        (std::vector<RawProcess>{
            {11, 101, "org.silent", false}, {13, 103, "org.desk", true}, {17, -5, std::nullopt, false}}));
}

struct FailureRow {
    const char* name;
    void (*fail)(test::FakeAudioHardware&);
    std::vector<RawProcess> expected;
};

TEST(ProcessAudio, WhatCannotBeReadBecomesADefault) {
    const FailureRow rows[] = {
        {"list size refused",
         [](auto& h) {
             h.refuseSize(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global);
         },
         {}},
        {"list data refused",
         [](auto& h) {
             h.refuseData(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global);
         },
         {}},
        {"list missing",
         [](auto& h) { h.remove(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global); },
         {}},
        {"list of a part of an id",
         [](auto& h) {
             h.setBytes(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global, {1, 2, 3});
         },
         {}},
        {"pid refused",
         [](auto& h) { h.refuseData(13, kAudioProcessPropertyPID, global); },
         {{13, 0, "org.desk", true}}},
        {"identifier refused",
         [](auto& h) { h.refuseData(13, kAudioProcessPropertyBundleID, global); },
         {{13, 103, std::nullopt, true}}},
        {"identifier null",
         [](auto& h) { h.setText(13, kAudioProcessPropertyBundleID, std::nullopt); },
         {{13, 103, std::nullopt, true}}},
        {"flag refused",
         [](auto& h) { h.refuseData(13, kAudioProcessPropertyIsRunningOutput, global); },
         {{13, 103, "org.desk", false}}},
        {"flag is 2",
         [](auto& h) { h.setValue(13, kAudioProcessPropertyIsRunningOutput, 2); },
         {{13, 103, "org.desk", true}}},
        {"process vanished", [](auto& h) { h.removeObject(13); }, {{13, 0, std::nullopt, false}}},
    };
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.name);
        Machine machine({onDesk});
        row.fail(machine.hardware);
        EXPECT_EQ(ProcessAudio::audioProcesses(machine.way->hardware()), row.expected);
    }
}

TEST(ProcessAudio, AFailedDeviceListCountsAsEmpty) {
    Machine machine({onDesk, alsoOnDesk});
    machine.hardware.refuseSize(13, kAudioProcessPropertyDevices, output);
    EXPECT_EQ(machine.source(desk)->pid, 104);
    machine.hardware.refuseData(14, kAudioProcessPropertyDevices, output);
    EXPECT_EQ(machine.source(desk)->pid, 103) << "the fall-back";
}

TEST(ProcessAudio, AListThatShrinksBetweenItsSizeAndItsData) {
    Machine machine({onCans, onDesk});
    machine.hardware.lieAboutSize(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global,
                                  400);
    EXPECT_EQ(ProcessAudio::audioProcesses(machine.way->hardware()).size(), 2U);
    machine.hardware.lieAboutSize(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global,
                                  4);
    EXPECT_EQ(ProcessAudio::audioProcesses(machine.way->hardware()).size(), 1U);
    machine.hardware.lieAboutSize(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, global,
                                  ~0U);
    EXPECT_TRUE(ProcessAudio::audioProcesses(machine.way->hardware()).empty())
        << "a size beyond all reason is a failure";
}

}  // namespace
}  // namespace purlock
