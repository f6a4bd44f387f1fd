#include "app/report_coordinator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "source/played_file.h"
#include "tests/audio/monitor_fixture.h"
#include "tests/source/introspection_fixture.h"
#include "tests/source/now_playing_fixture.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using Instants = std::vector<std::chrono::milliseconds>;

/// The audio monitor and the now-playing monitor on one fake machine and one run loop, and the coordinator on
/// both.
struct Fixture : test::MonitorFixture {
    test::IntrospectionFixture introspection;
    test::FakeFrameworkLoader loader;
    test::FakeNotificationCenter center{loop};
    std::shared_ptr<test::FakeNowPlayingFramework> framework =
        std::make_shared<test::FakeNowPlayingFramework>();
    test::ManualClock clock{loop, WallTime(1000h)};
    std::shared_ptr<NowPlayingMonitor> nowPlaying;
    std::shared_ptr<ReportCoordinator> coordinator;
    Instants ticks;  // when a report was published
    Instants changes;
    std::vector<Cancellable> watching;

    Fixture() {
        loader.provide(framework);
        applications.setRunning(
            {{100, "com.tidal.desktop", "Tidal"}, {200, "com.qobuz.player", "Qobuz"}, {300, "", "Nameless"}});
        nowPlaying = std::make_shared<NowPlayingMonitor>(
            NowPlayingSeams{loop, queues, operatingSystem, applications, loader, center});
    }

    void makeCoordinator() {
        coordinator = ReportCoordinator::make(
            {loop, clock, {hardware, applications, operatingSystem}, introspection.seams}, monitor,
            nowPlaying);
        watching.push_back(
            coordinator->lastTick().subscribe([this](WallTime) { ticks.push_back(loop.now()); }));
        watching.push_back(
            coordinator->objectWillChange().subscribe([this] { changes.push_back(loop.now()); }));
        ticks.clear();
    }

    /// Lets time pass with the queues running, a millisecond at a time.
    void pass(std::chrono::milliseconds duration) {
        for (auto end = loop.now() + duration; loop.now() < end;) {
            settle();
            loop.advance(1ms);
        }
        settle();
    }

    void setPlaying(const std::string& title, std::int32_t pid) {
        framework->setAnswer({{test::titleKey, title}, {test::rateKey, 1.0}}, pid);
        nowPlaying->refresh();
        settle();
    }

    /// Has a process play to the desk.
    void setProcess(const std::optional<std::string>& bundleID, std::int32_t pid) {
        test::FakeProcess{11, pid, bundleID, true, {50}}.addTo(hardware);
        hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList,
                            test::globalScope, {11});
    }

    std::string stage(std::size_t index) const { return coordinator->report().stages.at(index).primary; }
};

TEST(ReportCoordinator, BeginsEmptyAndWithTheTimeOfItsMaking) {
    Fixture f;
    f.loop.advance(5s);
    f.makeCoordinator();
    EXPECT_EQ(f.coordinator->report(), SignalPathReport{});
    EXPECT_EQ(f.coordinator->nowPlaying(), std::nullopt);
    EXPECT_EQ(f.coordinator->lastTick().value(), WallTime(1000h) + 5s);
}

TEST(ReportCoordinator, TheFirstReportComesOnePeriodOfQuietLater) {
    Fixture f;
    f.makeCoordinator();
    f.pass(79ms);
    EXPECT_TRUE(f.ticks.empty());
    f.pass(1ms);
    EXPECT_EQ(f.ticks, Instants{80ms});
    EXPECT_EQ(f.coordinator->report().stages.size(), 5U);
    EXPECT_EQ(f.coordinator->report().verdict, Verdict(verdict::Unknown{}));
    EXPECT_EQ(f.stage(0), "(no source identified)");
    EXPECT_EQ(f.coordinator->lastTick().value(), WallTime(1000h) + 80ms);
}

TEST(ReportCoordinator, FiveChangesInFiftyMillisecondsGiveOneReport) {
    Fixture f;
    f.makeCoordinator();
    f.start();
    f.pass(1s);
    f.ticks.clear();
    const auto begin = f.loop.now();
    for (int i = 1; i <= 5; ++i) {
        f.hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, test::integerStream(44100 + i, 24));
        f.notify(51, kAudioStreamPropertyPhysicalFormat);
        if (i < 5) f.pass(12ms);
    }
    f.pass(1s);
    EXPECT_EQ(f.ticks, Instants{begin + 48ms + 80ms}) << "80 ms after the last change, to the instant";
    EXPECT_EQ(f.stage(3), "44.1 kHz · 24-bit · 2ch");
    EXPECT_EQ(f.monitor->state().value()->physicalFormat->sampleRate, 44105);
}

TEST(ReportCoordinator, AChangeWithinThePeriodStartsItAnew) {
    Fixture f;
    f.makeCoordinator();
    f.start();
    for (int i = 0; i < 20; ++i) {
        f.pass(79ms);
        f.refreshed();
    }
    EXPECT_TRUE(f.ticks.empty());
    f.pass(80ms);
    EXPECT_EQ(f.ticks.size(), 1U);
}

TEST(ReportCoordinator, EqualDeliveriesGiveReportsAndTicksOfTheirOwn) {
    Fixture f;
    f.makeCoordinator();
    f.start();
    f.pass(100ms);
    const auto first = f.coordinator->report();
    f.refreshed();
    f.pass(100ms);
    EXPECT_EQ(f.ticks.size(), 2U);
    EXPECT_NE(f.coordinator->report(), first);
    EXPECT_EQ(f.coordinator->report().verdict, first.verdict);
}

struct UrgencyRow {
    const char* name;
    bool isObserved;
    std::function<void(Fixture&)> change;
    bool mayWait;
};

TEST(ReportCoordinator, OnlyAReportOfNothingNewThatNobodySeesMayWait) {
    const auto play = [](const char* title, double elapsed) {
        return [title, elapsed](Fixture& f) {
            f.framework->setAnswer(
                {{test::titleKey, title}, {test::rateKey, 1.0}, {test::elapsedKey, elapsed}}, 100);
            f.nowPlaying->refresh();
            f.settle();
        };
    };
    const auto refresh = [](Fixture& f) { f.refreshed(); };
    const auto changeFormat = [](Fixture& f) {
        f.hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, test::integerStream(96000, 24));
        f.refreshed();
    };
    const auto stop = [](Fixture& f) {
        f.framework->setAnswer({}, 0);
        f.nowPlaying->refresh();
        f.settle();
    };
    const UrgencyRow rows[] = {
        {"nothing new, observed", true, refresh, false},
        {"nothing new", false, refresh, true},
        {"another position in the track", false, play("Song", 2), true},
        {"another position, observed", true, play("Song", 2), false},
        {"another track", false, play("Next", 1), false},
        {"nothing plays any more", false, stop, false},
        {"another format", false, changeFormat, false},
    };
    for (const UrgencyRow& row : rows) {
        SCOPED_TRACE(row.name);
        Fixture f;
        f.makeCoordinator();
        f.start();
        play("Song", 1)(f);
        f.pass(1s);
        if (!row.isObserved) f.watching.pop_back();
        f.loop.takeTolerances();
        f.ticks.clear();
        row.change(f);
        EXPECT_EQ(f.loop.takeTolerances(), row.mayWait ? Instants{1s} : Instants{});
        f.pass(80ms);
        EXPECT_EQ(f.ticks.size(), 1U) << "and it comes all the same";
    }
}

/// Before the first report nothing is judged.
TEST(ReportCoordinator, TheFirstReportIsUrgent) {
    Fixture f;
    f.makeCoordinator();
    f.watching.clear();
    f.start();
    f.loop.takeTolerances();
    f.refreshed();
    EXPECT_EQ(f.loop.takeTolerances(), Instants{});
    f.pass(1s);
    f.refreshed();
    EXPECT_EQ(f.loop.takeTolerances(), Instants{1s});
}

TEST(ReportCoordinator, WhatPlaysIsMirroredAtOnceAndReportedLater) {
    Fixture f;
    f.makeCoordinator();
    f.start();
    f.pass(1s);
    f.ticks.clear();
    f.changes.clear();
    const auto begin = f.loop.now();
    f.setPlaying("Song", 100);
    ASSERT_TRUE(f.coordinator->nowPlaying());
    EXPECT_EQ(f.coordinator->nowPlaying()->title, "Song");
    EXPECT_EQ(f.changes, Instants{begin});
    EXPECT_EQ(f.stage(0), "(no source identified)");
    f.pass(79ms);
    EXPECT_TRUE(f.ticks.empty());
    f.pass(1ms);
    EXPECT_EQ(f.ticks, Instants{begin + 80ms});
    EXPECT_EQ(f.stage(0), "Tidal");
    EXPECT_EQ(f.changes.size(), 3U) << "once for the report and once for the tick";
    f.framework->setAnswer({}, 0);
    f.nowPlaying->refresh();
    f.settle();
    EXPECT_EQ(f.coordinator->nowPlaying(), std::nullopt);
}

TEST(ReportCoordinator, ObserversHearBeforeTheChange) {
    Fixture f;
    f.makeCoordinator();
    std::vector<std::size_t> stagesSeen;
    const Cancellable watching = f.coordinator->objectWillChange().subscribe(
        [&] { stagesSeen.push_back(f.coordinator->report().stages.size()); });
    f.pass(80ms);
    EXPECT_EQ(stagesSeen, (std::vector<std::size_t>{0, 0, 5}))
        << "once for what plays, once for the report, once for the tick";
}

TEST(ReportCoordinator, ObserversHearBeforeWhatPlaysChanges) {
    Fixture f;
    f.makeCoordinator();
    f.start();
    f.pass(1s);
    std::vector<std::string> titlesSeen;
    const Cancellable watching = f.coordinator->objectWillChange().subscribe([&] {
        const auto& info = f.coordinator->nowPlaying();
        titlesSeen.push_back(info ? info->title.value_or("untitled") : "nothing");
    });
    f.setPlaying("Song", 100);
    f.setPlaying("Next", 100);
    EXPECT_EQ(titlesSeen, (std::vector<std::string>{"nothing", "Song"}));
}

struct SourceRow {
    const char* name;
    std::optional<std::int32_t>
        playing;  // process of the now-playing application; 0: something plays, nobody knows who
    std::optional<std::string> process;  // bundle identifier of the process that is heard; "": it has none
    const char* source;
    const char* app;
};

TEST(ReportCoordinator, WhoseClaimIsMade) {
    const SourceRow rows[] = {
        {"nobody", {}, {}, "(no source identified)", "\u2014"},
        {"the now-playing application", 100, {}, "Tidal", "Tidal"},
        {"the process", {}, "com.qobuz.player", "Qobuz", "Qobuz"},
        {"the now-playing one wins", 100, "com.qobuz.player", "Tidal", "Qobuz"},
        {"unknown now-playing application: the process", 0, "com.qobuz.player", "Qobuz", "Qobuz"},
        {"an empty identifier counts as one", 300, "com.qobuz.player", "Nameless", "Qobuz"},
        {"neither has an identifier", 0, "", "(no source identified)", "Qobuz"},
        {"a process that no table knows", {}, "org.player", "(no source identified)", "Qobuz"},
    };
    for (const SourceRow& row : rows) {
        SCOPED_TRACE(row.name);
        Fixture f;
        f.makeCoordinator();
        if (row.process) f.setProcess(*row.process, 200);
        f.start();
        if (row.playing) f.setPlaying("Song", *row.playing);
        f.pass(100ms);
        EXPECT_EQ(f.stage(0), row.source);
        EXPECT_EQ(f.stage(1), row.app);
    }
}

TEST(ReportCoordinator, WithoutADeviceNoProcessIsAskedFor) {
    Fixture f;
    f.setProcess("com.qobuz.player", 200);
    f.setDefault(0);
    f.makeCoordinator();
    f.start();
    f.hardware.takeReads();
    f.pass(100ms);
    EXPECT_TRUE(f.hardware.takeReads().empty());
    EXPECT_EQ(f.stage(0), "(no source identified)");
}

TEST(ReportCoordinator, TheClaimReachesTheFindings) {
    Fixture f;
    f.setProcess("com.qobuz.player", 200);
    f.makeCoordinator();
    f.start();
    f.pass(100ms);
    std::vector<std::string> titles;
    for (const auto& finding : f.coordinator->report().diagnostics) titles.push_back(finding.title);
    EXPECT_EQ(titles, (std::vector<std::string>{"Source app downgraded", "Bit depth changed"}));
}

TEST(ReportCoordinator, TheEndDropsWhatIsUnderWay) {
    Fixture f;
    f.makeCoordinator();
    f.start();
    f.watching.clear();
    const std::weak_ptr<ReportCoordinator> gone = f.coordinator;
    f.coordinator.reset();
    EXPECT_TRUE(gone.expired()) << "its subscriptions do not keep it";
    EXPECT_EQ(f.loop.timerCount(), 0U);
    f.setPlaying("Song", 100);
    f.pass(1s);
}

/// A player of files that is heard at the desk, which runs at 48 kHz.
struct FileFixture : Fixture {
    explicit FileFixture(const char* bundleID = "mpv", std::int32_t streamProcess = 100) {
        applications.setRunning({{100, bundleID, "mpv"}, {200, "browser", "Browser"}});
        setProcess(bundleID, 100);
        setStream(streamProcess);
        makeCoordinator();
        start();
    }

    /// The stream that the device's format is judged by.
    void setStream(std::int32_t process) {
        MixerWork work;
        work.streamFormat = AudioFormat{48000, 32, 2, 0, 0};
        work.streamProcess = process;
        hardware.setMixerWork(50, work);
    }

    void setPlayingFile(double playbackRate = 1) {
        NowPlayingDictionary dictionary{{test::titleKey, "Song"}, {test::rateKey, playbackRate}};
        addPlayedFile(dictionary, {"FLAC", 192000.0, 24, 2, {}, true});
        framework->setAnswer(dictionary, 100);
        nowPlaying->refresh();
        pass(200ms);
    }

    bool accusesThePlayer() const {
        return std::ranges::any_of(coordinator->report().diagnostics, [](const Diagnostic& finding) {
            return finding.cause.starts_with("mpv is playing a 192.0 kHz file");
        });
    }
};

TEST(ReportCoordinator, AFileIsTheClaimWhereNoServiceClaimsAnything) {
    FileFixture f;
    f.setPlayingFile();
    const SignalStage& source = f.coordinator->report().stages.at(0);
    EXPECT_EQ(source.primary, "mpv");
    EXPECT_EQ(source.secondary, "FLAC · 24-bit · 192.0 kHz");
    EXPECT_TRUE(f.accusesThePlayer());

    FileFixture service("com.qobuz.player");
    service.setPlayingFile();
    EXPECT_EQ(service.stage(0), "Qobuz");
    EXPECT_FALSE(service.accusesThePlayer());
}

TEST(ReportCoordinator, APlayerIsAccusedForItsOwnStreamAlone) {
    FileFixture paused;
    paused.setPlayingFile(0);
    EXPECT_EQ(paused.stage(0), "mpv");
    EXPECT_FALSE(paused.accusesThePlayer());

    FileFixture another;
    another.setProcess("browser", 200);
    another.setPlayingFile();
    EXPECT_EQ(another.stage(0), "mpv");
    EXPECT_FALSE(another.accusesThePlayer());

    const auto addBrowser = [](FileFixture& f) {
        test::FakeProcess{12, 200, "browser", true, {50}}.addTo(f.hardware);
        f.hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList,
                              test::globalScope, {11, 12});
    };
    FileFixture beside;
    addBrowser(beside);
    beside.setPlayingFile();
    EXPECT_TRUE(beside.accusesThePlayer()) << "its own stream is known, whoever sounds besides";

    FileFixture anothers("mpv", 200);
    addBrowser(anothers);
    anothers.setPlayingFile();
    EXPECT_FALSE(anothers.accusesThePlayer());
}

}  // namespace
}  // namespace purlock
