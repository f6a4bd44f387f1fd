#include "ui/menubar_panel.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/support/view_reading.h"
#include "tests/ui/shell_fixture.h"
#include "ui/now_playing_card.h"
#include "ui/view_parts.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

/// The whole program with its panel open.
struct Fixture : test::ShellFixture {
    void open() {
        launch();
        desktop.clickStatusItem();
        pass(100ms);
    }

    const View& panel() const { return *desktop.content; }

    /// The items of the panel's column, by name.
    Texts items() const {
        Texts ids;
        for (const View& item : panel().children[0].children) ids.push_back(item.id);
        return ids;
    }

    const View& item(const char* id) const { return *test::elementWithID(panel(), id); }
    const Menu& menu() const { return test::contentOf<Menu>(*test::elementsOf<Menu>(panel())[0]); }
    std::string deviceLabel() const { return test::textsOf(item("picker"))[1]; }
};

TEST(MenubarPanel, IsAScrollingColumnOfFixedSize) {
    Fixture f;
    f.open();
    EXPECT_TRUE(std::holds_alternative<Scroll>(f.panel().content));
    EXPECT_EQ(f.panel().frame, (Size{360, 600}));
    const View& content = f.panel().children[0];
    EXPECT_EQ(test::contentOf<Column>(content).spacing, 14);
    EXPECT_EQ(content.padding, (Padding{16, 16}));
}

TEST(MenubarPanel, WithNothingPlayingTheDividerFollowsTheHeader) {
    Fixture f;
    f.open();
    EXPECT_EQ(f.items(), (Texts{"header", "divider above verdict", "verdict", "divider above path", "path",
                                "divider above picker", "picker", "divider above footer", "footer"}));
}

TEST(MenubarPanel, EveryDividerStandsOnFaintWhite) {
    Fixture f;
    f.open();
    const auto dividers = test::elementsOf<Divider>(f.panel());
    ASSERT_EQ(dividers.size(), 4U);
    for (const View* divider : dividers) EXPECT_EQ(divider->background, (Background{white(0.15), 0}));
}

TEST(MenubarPanel, TheHeader) {
    Fixture f;
    f.open();
    const View& header = f.item("header");
    EXPECT_EQ(test::contentOf<Row>(header).spacing, 8);
    ASSERT_EQ(header.children.size(), 5U);
    EXPECT_EQ(test::contentOf<Text>(header.children[0]),
              (Text{"Purlock", {16, FontWeight::bold}, white(), Lines::one}));
    EXPECT_EQ(header.children[1].help, "Live — last refresh now");
    EXPECT_TRUE(std::holds_alternative<FlexibleSpace>(header.children[2].content));
    EXPECT_EQ(test::contentOf<Text>(header.children[4]), (Text{"v1.1", {11}, white(0.5), Lines::one}));
}

TEST(MenubarPanel, APinShowsBeforeTheDeviceIsRead) {
    Fixture f;
    f.open();
    f.shell->settings()->setPinnedDeviceUID("gone");
    f.loop.runUntilIdle();  // the queue of the audio monitor has not run
    EXPECT_EQ(f.deviceLabel(), "📌 (pinned device unplugged)");
}

TEST(MenubarPanel, WhatPlaysShowsBeforeTheReport) {
    Fixture f;
    f.open();
    f.framework->setAnswer({{test::titleKey, "Song"}, {test::rateKey, 1.0}}, 0);
    f.shell->nowPlaying()->refresh();
    f.settle();
    EXPECT_EQ(f.items()[1], "card");
}

TEST(MenubarPanel, AListOfDevicesThatComesAloneShowsInTheMenu) {
    Fixture f;
    f.open();
    const auto before = f.menu().entries.size();
    f.setDevices({50});
    f.shell->monitor()->refreshDevices();
    f.settle();
    EXPECT_EQ(f.menu().entries.size(), before - 1);
}

TEST(MenubarPanel, ThePinButtonShowsAndTogglesTheSetting) {
    Fixture f;
    f.open();
    EXPECT_EQ(f.item("header").children[3].help, "Pin (keep panel open)");
    EXPECT_EQ(*test::symbolNamed(f.panel(), "pin"), (Symbol{"pin", {12}, white(0.4)}));

    f.desktop.use(TogglePanelPinned{});
    f.settle();
    EXPECT_TRUE(f.shell->settings()->panelPinned().value());
    EXPECT_EQ(f.item("header").children[3].help, "Unpin (close on outside click)");
    EXPECT_EQ(*test::symbolNamed(f.panel(), "pin.fill"), (Symbol{"pin.fill", {12}, accentAmber}));

    f.desktop.use(TogglePanelPinned{});
    EXPECT_FALSE(f.shell->settings()->panelPinned().value());
}

TEST(MenubarPanel, TheBannerAsksForAccessibilityWhileItIsMissing) {
    Fixture f;
    f.introspection.accessibility.setTrusted(false);
    f.open();
    EXPECT_EQ(f.items()[1], "banner");
    const View& banner = f.item("banner");
    EXPECT_EQ(test::contentOf<Button>(banner).action, Action(RequestAccessibility{}));
    const View& content = banner.children[0];
    EXPECT_EQ(content.padding, (Padding{10, 10}));
    EXPECT_EQ(content.background, (Background{white(0.06), 6}));
    EXPECT_EQ(test::symbolNamed(banner, "info.circle.fill")->color, accentAmber);
    const std::string question = "Enable Accessibility for full source detection";
    const std::string reason = "Lets Purlock read the quality badge in Tidal / Apple Music";
    EXPECT_EQ(test::textsOf(banner), (Texts{question, reason}));
    EXPECT_EQ(test::textReading(banner, question)->font, (Font{12, FontWeight::medium}));
    EXPECT_EQ(test::textReading(banner, question)->color, white());
    EXPECT_EQ(test::textReading(banner, reason)->font, (Font{10}));
    EXPECT_EQ(test::textReading(banner, reason)->color, white(0.55));
    EXPECT_EQ(test::contentOf<Column>(content.children[1]).spacing, 2);
    EXPECT_EQ(*test::symbolNamed(banner, "chevron.right"), (Symbol{"chevron.right", {10}, white(0.5)}));

    f.desktop.use(RequestAccessibility{});
    EXPECT_TRUE(f.desktop.promptGiven);
    EXPECT_EQ(f.items()[1], "banner") << "until it is granted";
    f.introspection.accessibility.setTrusted(true);
    f.pass(1s);
    EXPECT_EQ(f.items()[1], "divider above verdict") << "gone at the next change of anything observed";
}

NowPlayingInfo playing(std::optional<std::string> title, std::optional<std::string> artist = {},
                       std::optional<std::string> album = {}, std::optional<std::string> appName = {}) {
    NowPlayingInfo info;
    info.title = std::move(title);
    info.artist = std::move(artist);
    info.album = std::move(album);
    info.appName = std::move(appName);
    return info;
}

struct CardCase {
    const char* name;
    NowPlayingInfo info;
    Texts texts;
};

void PrintTo(const CardCase& row, std::ostream* out) {
    *out << row.name;
}

class NowPlayingCardTexts : public testing::TestWithParam<CardCase> {};

TEST_P(NowPlayingCardTexts, Table) {
    EXPECT_EQ(test::textsOf(NowPlayingCard{GetParam().info}.body()), GetParam().texts);
}

INSTANTIATE_TEST_SUITE_P(
    Table, NowPlayingCardTexts,
    testing::Values(CardCase{"Everything", playing("T", "A", "L", "App"), {"T", "A · L", "App"}},
                    CardCase{"NoTitleNoAlbum", playing({}, "A"), {"(unknown title)", "A"}},
                    CardCase{"AlbumAlone", playing("T", {}, "L"), {"T"}},
                    CardCase{"Nothing", {}, {"(unknown title)"}},
                    CardCase{"ApplicationAlone", playing({}, {}, {}, "App"), {"(unknown title)", "App"}},
                    CardCase{"EmptyTextsArePresent", playing("", "", ""), {"", " · "}},
                    CardCase{"MarkupIsText", playing("<b>T</b>"), {"<b>T</b>"}}),
    [](const auto& row) { return row.param.name; });

TEST(NowPlayingCard, Look) {
    NowPlayingInfo info = playing("T", "A", {}, "App");
    info.isPlaying = true;
    const View card = NowPlayingCard{info}.body();
    EXPECT_EQ(card.padding, (Padding{10, 10}));
    EXPECT_EQ(card.background, (Background{white(0.05), 6}));
    EXPECT_EQ(*test::textReading(card, "T"), (Text{"T", {13, FontWeight::semibold}, white(), Lines::one}));
    EXPECT_EQ(*test::textReading(card, "A"), (Text{"A", {11}, white(0.6), Lines::one}));
    EXPECT_EQ(*test::textReading(card, "App"), (Text{"App", {10}, white(0.4), Lines::one}));
    EXPECT_EQ(test::contentOf<Column>(card.children[0]).spacing, 2);
    EXPECT_EQ(*test::symbolNamed(card, "speaker.wave.2.fill"),
              (Symbol{"speaker.wave.2.fill", {12}, accentGreen}));
}

TEST(NowPlayingCard, PausedItShowsTheOtherSymbol) {
    const NowPlayingInfo info = playing("T");
    const View card = NowPlayingCard{info}.body();
    EXPECT_EQ(*test::symbolNamed(card, "pause.fill"), (Symbol{"pause.fill", {12}, white(0.4)}));
    EXPECT_EQ(test::symbolNamed(card, "speaker.wave.2.fill"), nullptr);
}

TEST(MenubarPanel, WhatPlaysStandsBelowTheHeader) {
    Fixture f;
    f.framework->setAnswer({{test::titleKey, std::string("Song")}}, 0);
    f.open();
    f.pass(1s);
    EXPECT_EQ(f.items()[1], "card");
    EXPECT_EQ(test::textsOf(f.item("card")), (Texts{"Song"}));
}

TEST(MenubarPanel, TheVerdictInASentence) {
    const AudioFormat rate44{44100, 16, 2, formatFlagIsSignedInteger, formatLinearPCM};
    const AudioFormat rate96{96000, 24, 2, formatFlagIsSignedInteger, formatLinearPCM};
    const std::string low = rate44.summary();
    const std::string high = rate96.summary();
    EXPECT_EQ(verdictDetail(verdict::Idle{rate96}), "Output ready at " + high + ". Nothing playing.");
    EXPECT_EQ(verdictDetail(verdict::BitPerfect{rate96}),
              "Source matches device at " + high + ". No conversion in path.");
    EXPECT_EQ(verdictDetail(verdict::Resampling{rate44, rate96}),
              "macOS is converting " + low + " to " + high + ". See findings below.");
    EXPECT_EQ(verdictDetail(verdict::Unknown{}), "No output device detected.");
    SystemWords words;
    words.unseenDetail = "{app} hides it.";
    EXPECT_EQ(verdictDetail(verdict::Unknown{}, words), "No output device detected.");
    EXPECT_EQ(verdictDetail(verdict::Unknown{"aplay"}, words), "aplay hides it.");
    EXPECT_EQ(verdictDetail(verdict::Altered{rate96}),
              "The mixer changes the samples on their way to the device. See findings below.");
}

TEST(MenubarPanel, TheVerdictOfTheReportIsShown) {
    Fixture f;
    f.open();
    const View& summary = f.item("verdict");
    EXPECT_EQ(test::textsOf(summary)[0], "Idle");
    const Text& detail = *test::textReading(summary, test::textsOf(summary)[1]);
    EXPECT_EQ(detail.text, verdictDetail(f.shell->coordinator()->report().verdict));
    EXPECT_EQ(detail.font, (Font{11}));
    EXPECT_EQ(detail.color, white(0.6));
    EXPECT_EQ(detail.lines, Lines::asNeeded);
}

TEST(MenubarPanel, TheSignalPathOfTheReportIsShown) {
    Fixture f;
    f.open();
    const auto& report = f.shell->coordinator()->report();
    ASSERT_EQ(report.stages.size(), 5U);
    for (const SignalStage& stage : report.stages) {
        EXPECT_NE(test::elementWithID(f.item("path"), stage.id.text()), nullptr) << stage.title;
    }
}

TEST(MenubarPanel, ThePickerOffersTheDefaultAndEveryDevice) {
    Fixture f;
    f.open();
    const std::vector<MenuEntry> expected{MenuItem{"System default", PinDevice{}}, MenuSeparator{},
                                          MenuItem{"Desk", PinDevice{"desk-1"}, true},
                                          MenuItem{"Cans", PinDevice{"cans-1"}}};
    EXPECT_EQ(f.menu().entries, expected);
}

TEST(MenubarPanel, ThePickersLook) {
    Fixture f;
    f.open();
    const View& picker = f.item("picker");
    EXPECT_EQ(test::contentOf<Column>(picker).spacing, 6);
    EXPECT_EQ(*test::textReading(picker, "OUTPUT DEVICE"),
              (Text{"OUTPUT DEVICE", {10, FontWeight::semibold}, white(0.4), Lines::one}));
    const View& label = picker.children[1].children[0];
    EXPECT_EQ(label.padding, (Padding{6, 10}));
    EXPECT_EQ(label.background, (Background{white(0.08), 6}));
    EXPECT_EQ(*test::textReading(picker, "Desk"), (Text{"Desk", {12}, white(), Lines::one}));
    EXPECT_EQ(*test::symbolNamed(picker, "chevron.up.chevron.down"),
              (Symbol{"chevron.up.chevron.down", {9}, white(0.5)}));
}

TEST(MenubarPanel, ChoosingADeviceOrTheDefaultIsStoredAndFollowed) {
    Fixture f;
    f.open();
    f.desktop.use(PinDevice{"cans-1"});
    f.settle();
    EXPECT_EQ(f.shell->monitor()->state().value()->name, "Cans");
    EXPECT_EQ(f.deviceLabel(), "📌 Cans");
    f.desktop.use(PinDevice{});
    f.settle();
    EXPECT_EQ(f.shell->monitor()->state().value()->name, "Desk");
    EXPECT_EQ(f.deviceLabel(), "Desk");
}

TEST(MenubarPanel, ChoosingTheSameDeviceAgainIsStillAnAssignment) {
    Fixture f;
    f.open();
    f.desktop.use(PinDevice{"cans-1"});
    const int before = f.defaults->changes;
    f.desktop.use(PinDevice{"cans-1"});
    EXPECT_EQ(f.defaults->changes, before + 1);
}

TEST(MenubarPanel, DeviceLabels) {
    struct Case {
        const char* name;
        std::optional<std::string> pin;
        bool devicesThere;
        const char* label;
    };
    for (const auto& [name, pin, devicesThere, label] :
         {Case{"no pin", {}, true, "Desk"}, Case{"empty pin", "", true, "Desk"},
          Case{"pinned and there", "cans-1", true, "📌 Cans"},
          Case{"the very text counts", "CANS-1", true, "📌 (pinned device unplugged)"},
          Case{"pinned and gone", "X", true, "📌 (pinned device unplugged)"},
          Case{"pinned, nothing there", "X", false, "📌 (pinned device unplugged)"},
          Case{"no pin, nothing there", {}, false, "—"}}) {
        Fixture f;
        f.shell->settings()->setPinnedDeviceUID(pin);
        if (!devicesThere) {
            f.setDevices({});
            f.setDefault(0);
        }
        f.open();
        EXPECT_EQ(f.deviceLabel(), label) << name;
    }
}

TEST(MenubarPanel, WithoutADeviceTheVerdictSaysSo) {
    Fixture f;
    f.setDevices({});
    f.setDefault(0);
    f.open();
    EXPECT_EQ(test::textsOf(f.item("verdict")), (Texts{"No device", "No output device detected."}));
}

TEST(MenubarPanel, TheFooter) {
    Fixture f;
    f.open();
    const View& footer = f.item("footer");
    EXPECT_EQ(test::textsOf(footer), (Texts{"Log to file", "Show log", "Quit"}));
    for (const char* text : {"Log to file", "Show log", "Quit"}) {
        EXPECT_EQ(*test::textReading(footer, text), (Text{text, {11}, white(0.7), Lines::one}));
    }
    EXPECT_TRUE(std::holds_alternative<FlexibleSpace>(footer.children[1].content));
    EXPECT_EQ(test::contentOf<Button>(footer.children[2]).action, Action(OpenLog{}));
    EXPECT_EQ(test::contentOf<Button>(footer.children[3]).action, Action(Quit{}));
}

TEST(MenubarPanel, TheLogSwitchShowsAndSetsTheSetting) {
    Fixture f;
    f.open();
    const auto logSwitch = [&f] { return test::contentOf<Switch>(f.item("footer").children[0]); };
    EXPECT_EQ(logSwitch(), (Switch{true, ToggleLogEnabled{}}));
    f.desktop.use(logSwitch().action);
    f.settle();
    EXPECT_FALSE(f.shell->settings()->logEnabled().value());
    EXPECT_EQ(logSwitch(), (Switch{false, ToggleLogEnabled{}}));
    EXPECT_EQ(test::textsOf(f.item("footer")), (Texts{"Log to file", "Show log", "Quit"}))
        << "the log can be shown whether it is written or not";
}

TEST(MenubarPanel, ClicksThatOvertakeThePictureAllCount) {
    Fixture f;
    f.open();
    const View shown = f.item("footer");
    for (const bool logging : {false, true, false}) {
        f.desktop.use(test::contentOf<Switch>(shown.children[0]).action);
        EXPECT_EQ(f.shell->settings()->logEnabled().value(), logging);
    }
}

TEST(MenubarPanel, TheActionsOfTheShell) {
    Fixture f;
    f.open();
    f.desktop.use(OpenLog{});
    EXPECT_EQ(f.desktop.opened, std::vector<std::filesystem::path>{"/support/Purlock/log.jsonl"});
    f.desktop.use(Quit{});
    EXPECT_TRUE(f.desktop.terminated);
}

TEST(MenubarPanel, EveryReportFlashesTheDot) {
    Fixture f;
    f.open();
    const auto opacity = [&f] { return test::contentOf<Circle>(f.item("header").children[1]).opacity; };
    f.pass(800ms);  // past the first flash, up to the next refresh
    f.pass(81ms);
    EXPECT_EQ(opacity(), 0.95);
    f.pass(450ms);
    EXPECT_EQ(opacity(), 0.35);
}

TEST(MenubarPanel, OpeningItFlashesForNoReportThatHasPassed) {
    Fixture f;
    f.launch();
    f.pass(3s);
    f.desktop.clickStatusItem();
    EXPECT_EQ(test::contentOf<Circle>(f.item("header").children[1]).opacity, 0.35);
    f.settle();
    EXPECT_EQ(test::contentOf<Circle>(f.item("header").children[1]).opacity, 0.35);
    f.pass(81ms);
    EXPECT_EQ(test::contentOf<Circle>(f.item("header").children[1]).opacity, 0.95)
        << "for that of the opening";
}

TEST(MenubarPanel, SeveralAnnouncementsMakeOnePicture) {
    Fixture f;
    f.open();
    const int before = f.desktop.contentsSet;
    f.shell->settings()->setLogEnabled(false);
    f.shell->settings()->setPanelPinned(true);
    f.shell->settings()->setLogEnabled(true);
    f.settle();
    EXPECT_EQ(f.desktop.contentsSet, before + 1);
}

TEST(MenubarPanel, HiddenItCostsNothing) {
    Fixture f;
    f.launch();
    f.pass(3s);
    EXPECT_EQ(f.desktop.contentsSet, 0);
    f.desktop.clickStatusItem();
    f.pass(100ms);
    f.desktop.clickStatusItem();
    f.settle();
    const int before = f.desktop.contentsSet;
    const auto timers = f.loop.timerCount();
    f.pass(3s);
    EXPECT_EQ(f.desktop.contentsSet, before);
    EXPECT_LE(f.loop.timerCount(), timers);
}

TEST(MenubarPanel, ClosingItInTheMiddleOfAFlashEndsTheFlash) {
    Fixture f;
    f.open();
    f.pass(881ms);
    const auto flashing = f.loop.timerCount();
    f.desktop.clickStatusItem();
    EXPECT_EQ(f.loop.timerCount(), flashing - 1);
}

TEST(MenubarPanel, HiddenByTheDesktopItRestsToo) {
    Fixture f;
    f.open();
    f.desktop.panelVisible = false;
    f.pass(3s);
    const int before = f.desktop.contentsSet;
    f.desktop.clickStatusItem();
    EXPECT_TRUE(f.desktop.panelVisible);
    f.pass(1s);
    EXPECT_GT(f.desktop.contentsSet, before + 1) << "it observes again";
}

}  // namespace
}  // namespace purlock
