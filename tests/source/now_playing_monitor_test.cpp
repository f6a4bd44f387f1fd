#include "source/now_playing_monitor.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/source/now_playing_fixture.h"

namespace purlock {
namespace {

using namespace test;

const std::string queueLabel = "org.purlock.Purlock.purlock.nowplaying";

const NowPlayingInfo onlyTheApplication{.appBundleID = "com.example.player", .appName = "Player"};

// Loading

struct VersionRow {
    const char* name;
    OperatingSystemVersion version;
    bool loaded;
};

constexpr VersionRow versionRows[] = {
    {"14.7", {14, 7, 0}, true},     {"14.9, a minor above the gate's", {14, 9, 0}, true},
    {"15.0", {15, 0, 0}, true},     {"15.3", {15, 3, 0}, true},
    {"15.3.99", {15, 3, 99}, true}, {"15.4", {15, 4, 0}, false},
    {"15.4.1", {15, 4, 1}, false},  {"15.10", {15, 10, 0}, false},
    {"16.0", {16, 0, 0}, false},    {"26.3", {26, 3, 0}, false},
};

TEST(NowPlayingMonitor, OpensNothingFrom15Point4On) {
    for (const VersionRow& row : versionRows) {
        SCOPED_TRACE(row.name);
        NowPlayingFixture host(row.version);
        const auto monitor = host.makeMonitor();
        monitor->start();
        host.settle();
        using Reason = std::optional<std::string>;
        EXPECT_EQ(monitor->unavailableReason().value(),
                  row.loaded ? Reason() : Reason("Now Playing requires v1.6 on macOS 15.4+"));
        EXPECT_EQ(host.loader.openedPaths().empty(), !row.loaded);
        EXPECT_EQ(host.framework->calls().empty(), !row.loaded);
        EXPECT_EQ(host.center.observedNames().empty(), !row.loaded);
    }
}

TEST(NowPlayingMonitor, LooksUpThreeFunctionsOfOneFrameworkByName) {
    NowPlayingFixture host;
    const auto monitor = host.makeMonitor();
    EXPECT_EQ(host.loader.openedPaths(),
              std::vector<std::string>{"/System/Library/PrivateFrameworks/MediaRemote.framework"});
    EXPECT_EQ(host.framework->lookups(), (std::vector<std::string>{getInfoName, registerName, getPIDName}));
    EXPECT_EQ(monitor->unavailableReason().value(), std::nullopt);
    EXPECT_EQ(monitor->current().value(), std::nullopt);
    ASSERT_EQ(host.queues.made().size(), 1U);
    EXPECT_EQ(host.queues.made().front()->label(), queueLabel);
    EXPECT_TRUE(host.framework->calls().empty());
}

TEST(NowPlayingMonitor, SaysWhenTheFrameworkCannotBeOpened) {
    NowPlayingFixture host;
    host.loader.provide(nullptr);
    const auto monitor = host.makeMonitor();
    EXPECT_EQ(monitor->unavailableReason().value(), "Could not open MediaRemote framework");
    monitor->start();
    monitor->refresh();
    host.settle();
    EXPECT_TRUE(host.center.observedNames().empty());
    EXPECT_EQ(monitor->current().value(), std::nullopt);
}

TEST(NowPlayingMonitor, SaysWhenTheInformationFunctionIsMissingAndLooksNoFurther) {
    NowPlayingFixture host;
    host.framework->remove(getInfoName);
    const auto monitor = host.makeMonitor();
    EXPECT_EQ(monitor->unavailableReason().value(), "MRMediaRemoteGetNowPlayingInfo missing");
    EXPECT_EQ(host.framework->lookups(), std::vector<std::string>{getInfoName});
    monitor->start();
    monitor->refresh();
    host.settle();
    EXPECT_TRUE(host.framework->calls().empty());
    EXPECT_TRUE(host.center.observedNames().empty());
}

TEST(NowPlayingMonitor, WithoutTheRegisterFunctionStartDoesNothing) {
    NowPlayingFixture host;
    host.framework->remove(registerName);
    host.framework->setAnswer({{titleKey, "Song"}}, NowPlayingFixture::player);
    const auto monitor = host.makeMonitor();
    EXPECT_EQ(monitor->unavailableReason().value(), std::nullopt);
    monitor->start();
    host.settle();
    EXPECT_TRUE(host.framework->calls().empty());
    EXPECT_TRUE(host.center.observedNames().empty());
    EXPECT_EQ(monitor->current().value(), std::nullopt);
}

TEST(NowPlayingMonitor, WithoutTheProcessFunctionTheApplicationIsAbsent) {
    NowPlayingFixture host;
    host.framework->remove(getPIDName);
    host.framework->setAnswer({{titleKey, "Song"}, {rateKey, 1.0}}, NowPlayingFixture::player);
    const auto monitor = host.makeMonitor();
    EXPECT_EQ(monitor->unavailableReason().value(), std::nullopt);
    monitor->start();
    host.settle();
    EXPECT_EQ(monitor->current().value(), (NowPlayingInfo{.title = "Song", .isPlaying = true}));
    EXPECT_TRUE(host.applications.askedProcesses().empty());
}

// Registering and fetching

TEST(NowPlayingMonitor, StartRegistersObservesAndFetchesOnceInThisOrder) {
    NowPlayingFixture host;
    const auto monitor = host.makeMonitor();
    monitor->start();
    EXPECT_EQ(host.framework->calls(),
              (std::vector<std::string>{"register on " + queueLabel, "getInfo on " + queueLabel}));
    EXPECT_EQ(host.center.observedNames(),
              (std::vector<std::string>{infoChanged, applicationChanged, playingChanged}));
}

TEST(NowPlayingMonitor, EachNotificationCausesOneFetchAndOnePublication) {
    for (const std::string& name : {infoChanged, applicationChanged, playingChanged}) {
        SCOPED_TRACE(name);
        NowPlayingFixture host;
        const auto monitor = host.makeMonitor();
        monitor->start();
        host.settle();
        std::vector<std::optional<NowPlayingInfo>> published;
        const auto kept = monitor->current().subscribe([&](const auto& info) { published.push_back(info); });
        host.framework->setAnswer({{titleKey, "Song"}}, 0);
        host.center.post(name);
        host.settle();
        ASSERT_EQ(published.size(), 2U);
        EXPECT_EQ(published.back(), NowPlayingInfo{.title = "Song"});
    }
}

TEST(NowPlayingMonitor, AnotherNotificationIsNotItsConcern) {
    NowPlayingFixture host;
    const auto monitor = host.makeMonitor();
    monitor->start();
    host.settle();
    const std::size_t calls = host.framework->calls().size();
    host.center.post("kMRMediaRemotePickableRoutesDidChangeNotification");
    host.settle();
    EXPECT_EQ(host.framework->calls().size(), calls);
}

TEST(NowPlayingMonitor, RefreshFetchesOnceAlsoBeforeTheStart) {
    NowPlayingFixture host;
    host.framework->setAnswer({{titleKey, "Song"}}, NowPlayingFixture::player);
    const auto monitor = host.makeMonitor();
    monitor->refresh();
    host.settle();
    EXPECT_EQ(host.framework->calls(),
              (std::vector<std::string>{"getInfo on " + queueLabel, "getPID on " + queueLabel}));
    EXPECT_EQ(monitor->current().value(),
              (NowPlayingInfo{.title = "Song", .appBundleID = "com.example.player", .appName = "Player"}));
}

TEST(NowPlayingMonitor, PublishesEqualValuesToo) {
    NowPlayingFixture host;
    host.framework->setAnswer({{titleKey, "Song"}}, 0);
    const auto monitor = host.makeMonitor();
    int published = 0;
    const auto kept = monitor->current().subscribe([&](const auto&) { ++published; });
    monitor->refresh();
    host.settle();
    monitor->refresh();
    host.settle();
    EXPECT_EQ(published, 3);
}

TEST(NowPlayingMonitor, TakesTheProcessLookupAndTheValueAsSeparateTurnsOfTheMainLoop) {
    NowPlayingFixture host;
    host.framework->setAnswer({{titleKey, "Song"}}, NowPlayingFixture::player);
    const auto monitor = host.makeMonitor();
    monitor->refresh();
    EXPECT_EQ(host.loop.runPosted(), 0U);  // all of the framework's answers come on the work queue
    host.queues.run();
    EXPECT_TRUE(host.applications.askedProcesses().empty());
    EXPECT_EQ(host.loop.runPosted(), 1U);
    EXPECT_EQ(host.applications.askedProcesses(), std::vector<std::int32_t>{NowPlayingFixture::player});
    EXPECT_EQ(monitor->current().value(), std::nullopt);
    EXPECT_EQ(host.loop.runPosted(), 1U);
    EXPECT_TRUE(monitor->current().value().has_value());
}

// The dictionary

struct DictionaryRow {
    const char* name;
    NowPlayingDictionary dictionary;
    NowPlayingInfo expected;  // the application comes on top
};

const std::vector<DictionaryRow>& dictionaryRows() {
    const NowPlayingValue other = OtherNowPlayingType{};
    static const std::vector<DictionaryRow> rows = {
        {"empty", {}, {}},
        {"title", {{titleKey, "Song"}}, {.title = "Song"}},
        {"artist", {{artistKey, "Singer"}}, {.artist = "Singer"}},
        {"album", {{albumKey, "Record"}}, {.album = "Record"}},
        {"elapsed", {{elapsedKey, 1.5}}, {.elapsedSeconds = 1.5}},
        {"elapsed zero is known", {{elapsedKey, 0.0}}, {.elapsedSeconds = 0.0}},
        {"duration", {{durationKey, 180.25}}, {.durationSeconds = 180.25}},
        {"empty title", {{titleKey, ""}}, {}},
        {"empty artist", {{artistKey, ""}}, {}},
        {"empty album", {{albumKey, ""}}, {}},
        {"a blank title is one", {{titleKey, " "}}, {.title = " "}},
        {"title that is a number", {{titleKey, 1.0}}, {}},
        {"artist of another type", {{artistKey, other}}, {}},
        {"album that is a number", {{albumKey, 7.0}}, {}},
        {"elapsed that is a text", {{elapsedKey, "1.5"}}, {}},
        {"duration of another type", {{durationKey, other}}, {}},
        {"rate missing", {{titleKey, "Song"}}, {.title = "Song"}},
        {"rate 0", {{rateKey, 0.0}}, {}},
        {"rate 0.001", {{rateKey, 0.001}}, {}},
        {"rate 0.0011", {{rateKey, 0.0011}}, {.isPlaying = true}},
        {"rate 1", {{rateKey, 1.0}}, {.isPlaying = true}},
        {"rate 2", {{rateKey, 2.0}}, {.isPlaying = true}},
        {"rate backwards", {{rateKey, -1.0}}, {}},
        {"rate not a number", {{rateKey, std::numeric_limits<double>::quiet_NaN()}}, {}},
        {"rate that is a text", {{rateKey, "1"}}, {}},
        {"rate of another type", {{rateKey, other}}, {}},
        {"a key in other letters", {{"kmrmediaremotenowplayinginfotitle", "Song"}}, {}},
        {"unknown keys", {{"kMRMediaRemoteNowPlayingInfoGenre", "Jazz"}}, {}},
        {"all of them",
         {{titleKey, "Song"},
          {artistKey, "Singer"},
          {albumKey, "Record"},
          {elapsedKey, 30.0},
          {durationKey, 180.0},
          {rateKey, 1.0}},
         {.title = "Song",
          .artist = "Singer",
          .album = "Record",
          .isPlaying = true,
          .elapsedSeconds = 30.0,
          .durationSeconds = 180.0}},
    };
    return rows;
}

TEST(NowPlayingMonitor, ReadsTheDictionaryByItsKeys) {
    for (const DictionaryRow& row : dictionaryRows()) {
        SCOPED_TRACE(row.name);
        NowPlayingFixture host;
        host.framework->setAnswer(row.dictionary, NowPlayingFixture::player);
        const auto monitor = host.makeMonitor();
        monitor->start();
        host.settle();
        NowPlayingInfo expected = row.expected;
        expected.appBundleID = "com.example.player";
        expected.appName = "Player";
        EXPECT_EQ(monitor->current().value(), expected);
    }
}

// The application, and when nothing plays

struct PresenceRow {
    const char* name;
    NowPlayingDictionary dictionary;
    std::int32_t pid;
    std::optional<NowPlayingInfo> expected;
};

const std::vector<PresenceRow>& presenceRows() {
    constexpr std::int32_t player = NowPlayingFixture::player;
    static const std::vector<PresenceRow> rows = {
        {"nothing at all", {}, 0, std::nullopt},
        {"an empty dictionary and a running application", {}, player, onlyTheApplication},
        {"an empty dictionary and an unknown process", {}, 4711, std::nullopt},
        {"a negative process identifier", {}, -1, std::nullopt},
        {"an album alone, no application", {{albumKey, "Record"}}, 0, std::nullopt},
        {"an album alone and an application",
         {{albumKey, "Record"}},
         player,
         NowPlayingInfo{.album = "Record", .appBundleID = "com.example.player", .appName = "Player"}},
        {"a playing state alone", {{rateKey, 1.0}}, 0, std::nullopt},
        {"times alone", {{elapsedKey, 1.0}, {durationKey, 2.0}}, 0, std::nullopt},
        {"a title without an application", {{titleKey, "Song"}}, 0, NowPlayingInfo{.title = "Song"}},
        {"an artist without an application", {{artistKey, "Singer"}}, -1, NowPlayingInfo{.artist = "Singer"}},
        {"a process without an identifier", {{rateKey, 1.0}}, 101, std::nullopt},
        {"a process without an identifier, and a title",
         {{titleKey, "Song"}},
         101,
         NowPlayingInfo{.title = "Song", .appName = "Nameless"}},
        {"process 1 is asked for", {}, 1, NowPlayingInfo{.appBundleID = "com.example.first"}},
    };
    return rows;
}

TEST(NowPlayingMonitor, NothingPlaysWithoutTitleArtistAndApplication) {
    for (const PresenceRow& row : presenceRows()) {
        SCOPED_TRACE(row.name);
        NowPlayingFixture host;
        host.applications.setRunning({{NowPlayingFixture::player, "com.example.player", "Player"},
                                      {101, std::nullopt, "Nameless"},
                                      {1, "com.example.first", std::nullopt},
                                      {0, "com.example.zero", "Zero"},
                                      {-1, "com.example.negative", "Negative"}});
        host.framework->setAnswer(row.dictionary, row.pid);
        const auto monitor = host.makeMonitor();
        monitor->start();
        host.settle();
        EXPECT_EQ(monitor->current().value(), row.expected);
        EXPECT_EQ(host.applications.askedProcesses().empty(), row.pid < 1);
    }
}

TEST(NowPlayingMonitor, APlayerThatEndsLeavesNothingPlaying) {
    NowPlayingFixture host;
    host.framework->setAnswer({{titleKey, "Song"}}, NowPlayingFixture::player);
    const auto monitor = host.makeMonitor();
    monitor->start();
    host.settle();
    EXPECT_TRUE(monitor->current().value().has_value());
    host.framework->setAnswer({}, 0);
    host.center.post(applicationChanged);
    host.settle();
    EXPECT_EQ(monitor->current().value(), std::nullopt);
}

// The monitor's end

TEST(NowPlayingMonitor, ItsEndRemovesTheObservers) {
    NowPlayingFixture host;
    auto monitor = host.makeMonitor();
    monitor->start();
    EXPECT_EQ(host.center.observedNames().size(), 3U);
    monitor.reset();
    EXPECT_TRUE(host.center.observedNames().empty());
}

TEST(NowPlayingMonitor, NothingThatIsUnderWayKeepsItAlive) {
    NowPlayingFixture host;
    auto monitor = host.makeMonitor();
    monitor->start();
    const std::weak_ptr<NowPlayingMonitor> witness = monitor;
    monitor.reset();
    EXPECT_TRUE(witness.expired());
}

/// The steps that a fetch takes before its value is there; the monitor ends after each of them in turn.
TEST(NowPlayingMonitor, AnAnswerThatComesAfterItsEndDoesNothing) {
    enum Step { fetched, informationArrived, processArrived, lookedUp };
    for (const Step last : {fetched, informationArrived, processArrived, lookedUp}) {
        SCOPED_TRACE(last);
        NowPlayingFixture host;
        host.framework->setAnswer({{titleKey, "Song"}}, NowPlayingFixture::player);
        auto monitor = host.makeMonitor();
        int published = 0;
        const auto kept = monitor->current().subscribe([&](const auto&) { ++published; });
        monitor->start();
        if (last >= informationArrived) host.queues.made().front()->runOne();
        if (last >= processArrived) host.queues.made().front()->runOne();
        if (last >= lookedUp) host.loop.runPosted();
        monitor.reset();
        host.settle();
        EXPECT_EQ(published, 1);
        EXPECT_EQ(host.applications.askedProcesses().size(), last >= lookedUp ? 1U : 0U);
    }
}

TEST(NowPlayingMonitor, ANotificationThatWasPostedBeforeItsEndDoesNothing) {
    NowPlayingFixture host;
    auto monitor = host.makeMonitor();
    monitor->start();
    host.settle();
    const std::size_t calls = host.framework->calls().size();
    host.center.post(infoChanged);
    monitor.reset();
    host.settle();
    EXPECT_EQ(host.framework->calls().size(), calls);
}

TEST(NowPlayingMonitor, AnObserverMayDropItDuringAPublication) {
    NowPlayingFixture host;
    host.framework->setAnswer({{titleKey, "Song"}}, 0);
    auto monitor = host.makeMonitor();
    const auto kept = monitor->current().subscribe([&](const auto& info) {
        if (info) monitor.reset();
    });
    monitor->start();
    host.settle();
    EXPECT_EQ(monitor, nullptr);
    EXPECT_TRUE(host.center.observedNames().empty());
}

}  // namespace
}  // namespace purlock
