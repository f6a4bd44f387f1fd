#include "app/settings_store.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/memory_user_defaults.h"

namespace purlock {
namespace {

using Values = std::map<std::string, DefaultsValue, std::less<>>;

struct LoadRow {
    const char* name;
    Values stored;
    std::optional<std::string> pinnedDeviceUID;
    bool logEnabled;
    bool panelPinned;
};

const LoadRow loadRows[] = {
    {"nothing saved", {}, {}, true, false},
    {"everything saved",
     {{"pinnedDeviceUID", "dac"}, {"logEnabled", false}, {"panelPinned", true}},
     "dac",
     false,
     true},
    {"the defaults saved", {{"logEnabled", true}, {"panelPinned", false}}, {}, true, false},
    {"empty pin", {{"pinnedDeviceUID", ""}}, {}, true, false},
    {"pin of another type", {{"pinnedDeviceUID", OtherDefaultsValue{}}}, {}, true, false},
    {"pin that is a boolean", {{"pinnedDeviceUID", true}}, {}, true, false},
    {"log switch that is a text", {{"logEnabled", "false"}}, {}, true, false},
    {"log switch of another type", {{"logEnabled", OtherDefaultsValue{}}}, {}, true, false},
    {"panel pin that is a text", {{"panelPinned", "true"}}, {}, true, false},
    {"panel pin of another type", {{"panelPinned", OtherDefaultsValue{}}}, {}, true, false},
    {"keys are case-sensitive", {{"PinnedDeviceUID", "dac"}, {"LogEnabled", false}}, {}, true, false},
};

TEST(SettingsStore, ReadsWhatIsStoredAndChangesNothing) {
    for (const LoadRow& row : loadRows) {
        SCOPED_TRACE(row.name);
        const auto defaults = std::make_shared<test::MemoryUserDefaults>();
        defaults->values = row.stored;
        const SettingsStore store(defaults);
        EXPECT_EQ(store.pinnedDeviceUID().value(), row.pinnedDeviceUID);
        EXPECT_EQ(store.logEnabled().value(), row.logEnabled);
        EXPECT_EQ(store.panelPinned().value(), row.panelPinned);
        EXPECT_EQ(defaults->changes, 0);
    }
}

struct Fixture {
    std::shared_ptr<test::MemoryUserDefaults> defaults = std::make_shared<test::MemoryUserDefaults>();
    SettingsStore store{defaults};
    std::vector<std::string> events;
    std::vector<Cancellable> kept;

    Fixture() {
        kept.push_back(
            store.pinnedDeviceUID().subscribe([this](const auto& uid) { note("observed " + text(uid)); }));
        kept.push_back(store.logEnabled().subscribe([this](bool on) { note("observed log " + text(on)); }));
        kept.push_back(store.panelPinned().subscribe([this](bool on) { note("observed pin " + text(on)); }));
        store.setOnPinnedDeviceChange([this](const auto& uid) { note("callback " + text(uid)); });
        store.setOnPanelPinnedChange([this](bool on) { note("callback pin " + text(on)); });
        events.clear();
    }

    static std::string text(const std::optional<std::string>& uid) { return uid ? "'" + *uid + "'" : "none"; }
    static std::string text(bool on) { return on ? "on" : "off"; }

    /// An event, and how many writes had been made by then.
    void note(const std::string& event) {
        events.push_back(event + " after " + std::to_string(defaults->changes));
    }
};

using Events = std::vector<std::string>;

TEST(SettingsStore, APinIsObservedThenStoredThenCalledBack) {
    Fixture f;
    f.store.setPinnedDeviceUID("dac");
    EXPECT_EQ(f.events, (Events{"observed 'dac' after 0", "callback 'dac' after 1"}));
    EXPECT_EQ(f.defaults->values, (Values{{"pinnedDeviceUID", "dac"}}));
    f.store.setPinnedDeviceUID("dac");
    EXPECT_EQ(f.events.size(), 4U) << "the same value counts as an assignment";
    f.store.setPinnedDeviceUID(std::nullopt);
    EXPECT_EQ(f.events.back(), "callback none after 3");
    EXPECT_TRUE(f.defaults->values.empty());
}

TEST(SettingsStore, AnEmptyPinIsNeverStored) {
    Fixture f;
    f.store.setPinnedDeviceUID("dac");
    f.store.setPinnedDeviceUID("");
    EXPECT_EQ(f.events.back(), "callback '' after 2");
    EXPECT_EQ(f.store.pinnedDeviceUID().value(), "");
    EXPECT_TRUE(f.defaults->values.empty());
    EXPECT_EQ(SettingsStore(f.defaults).pinnedDeviceUID().value(), std::nullopt);
}

TEST(SettingsStore, ThePanelPinIsStoredAndCalledBackEvenWhenItStays) {
    Fixture f;
    f.store.setPanelPinned(false);
    EXPECT_EQ(f.events, (Events{"observed pin off after 0", "callback pin off after 1"}));
    EXPECT_EQ(f.defaults->values, (Values{{"panelPinned", false}}));
    f.store.setPanelPinned(true);
    EXPECT_EQ(f.events.back(), "callback pin on after 2");
    EXPECT_EQ(f.defaults->values, (Values{{"panelPinned", true}}));
}

TEST(SettingsStore, TheLogSwitchHasNoCallback) {
    Fixture f;
    f.store.setLogEnabled(false);
    EXPECT_EQ(f.events, (Events{"observed log off after 0"}));
    EXPECT_EQ(f.defaults->values, (Values{{"logEnabled", false}}));
    f.store.setLogEnabled(false);
    EXPECT_EQ(f.defaults->changes, 2);
}

TEST(SettingsStore, ACallbackMayReplaceItself) {
    Fixture f;
    int first = 0;
    int second = 0;
    f.store.setOnPinnedDeviceChange([&](const auto&) {
        f.store.setOnPinnedDeviceChange([&](const auto&) { ++second; });
        ++first;
    });
    f.store.setPinnedDeviceUID("a");
    f.store.setPinnedDeviceUID("b");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(SettingsStore, WithoutCallbacksNothingIsCalled) {
    const auto defaults = std::make_shared<test::MemoryUserDefaults>();
    SettingsStore store(defaults);
    store.setPinnedDeviceUID("dac");
    store.setPanelPinned(true);
    EXPECT_EQ(defaults->changes, 2);
}

TEST(SettingsStore, AValueAssignedByAnObserverIsTheOneThatIsKept) {
    Fixture f;
    const Cancellable correcting = f.store.pinnedDeviceUID().subscribe([&](const auto& uid) {
        if (uid == "old") f.store.setPinnedDeviceUID("new");
    });
    f.store.setPinnedDeviceUID("old");
    EXPECT_EQ(f.store.pinnedDeviceUID().value(), "new");
    EXPECT_EQ(f.defaults->values, (Values{{"pinnedDeviceUID", "new"}}));
    EXPECT_EQ(f.events.back(), "callback 'new' after 2");
}

TEST(SettingsStore, ASwitchThatAnObserverSetsBackIsStoredAsItIs) {
    Fixture f;
    const Cancellable logStays = f.store.logEnabled().subscribe([&](bool on) {
        if (!on) f.store.setLogEnabled(true);
    });
    const Cancellable pinStays = f.store.panelPinned().subscribe([&](bool on) {
        if (on) f.store.setPanelPinned(false);
    });
    f.store.setLogEnabled(false);
    f.store.setPanelPinned(true);
    EXPECT_EQ(f.defaults->values, (Values{{"logEnabled", true}, {"panelPinned", false}}));
    EXPECT_EQ(f.events.back(), "callback pin off after 4");
}

TEST(SettingsStore, TheKeysAreTheStoresOwn) {
    EXPECT_STREQ(SettingsStore::pinnedKey, "pinnedDeviceUID");
    EXPECT_STREQ(SettingsStore::logEnabledKey, "logEnabled");
    EXPECT_STREQ(SettingsStore::panelPinnedKey, "panelPinned");
}

TEST(SettingsStore, TheSharedOneIsMadeOnFirstUse) {
    const auto defaults = std::make_shared<test::MemoryUserDefaults>();
    defaults->values = {{"panelPinned", true}};
    SettingsStore::shared.provide([&] { return std::make_shared<SettingsStore>(defaults); });
    EXPECT_TRUE(SettingsStore::shared()->panelPinned().value());
    EXPECT_EQ(SettingsStore::shared(), SettingsStore::shared());
}

}  // namespace
}  // namespace purlock
