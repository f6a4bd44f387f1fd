// Which properties are listened to, and what each notification triggers.

#include <gtest/gtest.h>

#include <set>

#include "tests/audio/monitor_fixture.h"

namespace purlock {
namespace {

using Lines = std::vector<std::string>;
using test::globalScope;
using test::MonitorFixture;
using test::outputScope;

class AudioMonitorListeners : public testing::Test, protected MonitorFixture {};

const Lines systemLines = {"1 dOut glob", "1 dev# glob"};

Lines with(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

const Lines deskLines = {"50 gone glob", "50 nsrt glob", "50 stm# outp", "51 sfmt glob", "51 pft  glob"};
const Lines cansLines = {"60 gone glob", "60 nsrt glob", "60 stm# outp", "61 sfmt glob", "61 pft  glob"};

TEST_F(AudioMonitorListeners, TheStartWatchesTheSystemAndThenTheDevice) {
    start();
    EXPECT_EQ(listened(), with(systemLines, deskLines));
    for (const auto& listener : hardware.listeners()) {
        EXPECT_EQ(listener.address.element, kAudioObjectPropertyElementMain);
        EXPECT_EQ(listener.queue, queues.made()[0]);
    }
}

TEST_F(AudioMonitorListeners, ADeviceWithoutStreamsGetsThreeListeners) {
    hardware.setObjects(50, kAudioDevicePropertyStreams, outputScope, {});
    start();
    EXPECT_EQ(listened(), with(systemLines, {"50 gone glob", "50 nsrt glob", "50 stm# outp"}));
}

TEST_F(AudioMonitorListeners, TheyFollowTheDevice) {
    start();
    setDefault(60);
    notify(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice);
    EXPECT_EQ(listened(), with(systemLines, cansLines));
    EXPECT_EQ(hardware.strayRemovals(), 0) << "each is removed by the very block that was added";
}

TEST_F(AudioMonitorListeners, TheyFollowTheFirstStream) {
    start();
    hardware.setObjects(50, kAudioDevicePropertyStreams, outputScope, {});
    notify(50, kAudioDevicePropertyStreams, outputScope);
    EXPECT_EQ(listened(), with(systemLines, {"50 gone glob", "50 nsrt glob", "50 stm# outp"}));
    hardware.setObjects(50, kAudioDevicePropertyStreams, outputScope, {61, 51});
    notify(50, kAudioDevicePropertyStreams, outputScope);
    EXPECT_EQ(listened(), with(systemLines, {"50 gone glob", "50 nsrt glob", "50 stm# outp", "61 sfmt glob",
                                             "61 pft  glob"}));
}

TEST_F(AudioMonitorListeners, NothingIsReinstalledWhileDeviceAndStreamStay) {
    start();
    std::set<const void*> before;
    for (const auto& listener : hardware.listeners()) before.insert(listener.block.get());
    for (int i = 0; i < 5; ++i) refreshed();
    std::set<const void*> after;
    for (const auto& listener : hardware.listeners()) after.insert(listener.block.get());
    EXPECT_EQ(before, after);
}

TEST_F(AudioMonitorListeners, ARestartWatchesNothingTwice) {
    start();
    monitor->start();
    settle();
    EXPECT_EQ(listened(), with(systemLines, deskLines));
}

TEST_F(AudioMonitorListeners, ARefusedListenerIsNotRecordedAndTriedAgainLater) {
    hardware.refuseListeners(true);
    start();
    EXPECT_TRUE(listened().empty());
    EXPECT_EQ(states.size(), 1U) << "the state is read all the same";
    hardware.refuseListeners(false);
    setDefault(60);
    refreshed();
    EXPECT_EQ(listened(), cansLines);
    EXPECT_EQ(hardware.strayRemovals(), 0);
}

struct NotificationRow {
    AudioObjectID object;
    std::uint32_t selector;
    std::uint32_t scope;
    Lines events;
};

TEST_F(AudioMonitorListeners, WhatEachNotificationTriggers) {
    const NotificationRow rows[] = {
        {1, kAudioHardwarePropertyDefaultOutputDevice, globalScope, {"state"}},
        {1, kAudioHardwarePropertyDevices, globalScope, {"list", "state"}},
        {50, kAudioDevicePropertyDeviceIsRunningSomewhere, globalScope, {"state"}},
        {50, kAudioDevicePropertyNominalSampleRate, globalScope, {"state"}},
        {50, kAudioDevicePropertyStreams, outputScope, {"state"}},
        {51, kAudioStreamPropertyVirtualFormat, globalScope, {"state"}},
        {51, kAudioStreamPropertyPhysicalFormat, globalScope, {"state"}},
        {50, kAudioDevicePropertyStreams, globalScope, {}},
        {60, kAudioDevicePropertyNominalSampleRate, globalScope, {}},
    };
    start();
    for (const NotificationRow& row : rows) {
        SCOPED_TRACE(std::to_string(row.object) + " " + code(row.selector));
        events.clear();
        notify(row.object, row.selector, row.scope);
        EXPECT_EQ(events, row.events);
    }
}

TEST_F(AudioMonitorListeners, EachNotificationFiresItsOwnRefresh) {
    start();
    states.clear();
    for (int i = 0; i < 25; ++i) {
        hardware.notify(50, kAudioDevicePropertyNominalSampleRate, globalScope);
    }
    settle();
    EXPECT_EQ(states.size(), 25U);
}

TEST_F(AudioMonitorListeners, ABurstEndsWithTheLastState) {
    start();
    for (int i = 1; i <= 10000; ++i) {
        hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, test::integerStream(40000 + i, 24));
        hardware.notify(51, kAudioStreamPropertyPhysicalFormat, globalScope);
    }
    settle();
    EXPECT_EQ(monitor->state().value()->physicalFormat->sampleRate, 50000);
}

TEST_F(AudioMonitorListeners, TheEndRemovesEveryListener) {
    start();
    const auto installed = hardware.listeners();
    monitor.reset();
    EXPECT_TRUE(hardware.listeners().empty());
    EXPECT_EQ(hardware.strayRemovals(), 0);
    // What was under way still arrives, and finds nobody.
    hardware.takeReads();
    for (const auto& listener : installed) (*listener.block)();
    pin->setPinnedDeviceUID("cans-1");
    settle();
    EXPECT_TRUE(hardware.takeReads().empty());
}

TEST_F(AudioMonitorListeners, WhatWasPostedFindsNobodyAfterTheEnd) {
    monitor->start();
    monitor.reset();
    settle();
    EXPECT_TRUE(events.empty());
}

}  // namespace
}  // namespace purlock
