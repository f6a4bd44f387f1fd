#include "platform/linux/panel/view_tree.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/panel/panel_surface.h"
#include "tests/support/panel_states.h"
#include "ui/view_parts.h"

namespace purlock {
namespace {

using Texts = std::vector<std::string>;

View panelInState(const std::string& name) {
    for (auto& state : test::panelStates()) {
        if (state.name == name) return state.view;
    }
    ADD_FAILURE() << "no state " << name;
    return {};
}

/// The panel's window on a screen that nobody sees.
struct Fixture {
    std::vector<Action> performed;
    int cancelled = 0;
    host_linux::PanelSurface surface{
        {[this](const Action& action) { performed.push_back(action); }, [this] { ++cancelled; }}};

    Fixture() { surface.setFixedSize(360, 600); }

    void show(const View& view) {
        surface.setContent(view);
        surface.show();
        surface.activateWindow();
        QApplication::processEvents();
    }

    /// What stands inside the padding of a scrolling column, as the panel has it.
    void showItems(std::vector<View> items) {
        View content = column(14, std::move(items));
        content.padding = {16, 16};
        View panel = container(Scroll{}, {std::move(content)});
        panel.frame = Size{360, 600};
        show(panel);
    }

    template <typename Widget>
    std::vector<Widget*> all() const {
        const auto found = surface.findChildren<Widget*>();
        return {found.begin(), found.end()};
    }

    QWidget* named(const char* name) const {
        for (QWidget* widget : surface.findChildren<QWidget*>()) {
            if (widget->accessibleName() == QString::fromUtf8(name)) return widget;
        }
        ADD_FAILURE() << "nothing is called " << name;
        return nullptr;
    }

    QScrollArea& scroll() const { return *all<QScrollArea>().at(0); }
    QPushButton& menuButton() const { return *all<QPushButton>().at(0); }
};

View button(const char* title, const Action& action) {
    return container(Button{action}, {line(title, {11}, white())});
}

// Refreshes.

TEST(ViewTree, ANewReportIsDrawnIntoTheWidgetsThatAreThere) {
    Fixture f;
    f.show(panelInState("bit-perfect"));
    const auto before = f.all<QWidget>();
    f.show(panelInState("bit-perfect"));  // made anew, so every stage has another id
    EXPECT_EQ(f.all<QWidget>(), before);
}

TEST(ViewTree, WhatIsInsertedLeavesTheOthersInPlace) {
    Fixture f;
    f.show(panelInState("nothing-playing"));
    const QPointer<QWidget> picker = &f.menuButton();
    const QPointer<QWidget> quit = f.named("Quit");
    f.show(panelInState("accessibility-banner"));
    EXPECT_EQ(picker, &f.menuButton());
    EXPECT_EQ(quit, f.named("Quit"));
    const int banner =
        f.named(
             "Enable Accessibility for full source detection, Lets Purlock read the quality badge in Tidal / Apple Music")
            ->mapTo(&f.surface, QPoint())
            .y();
    EXPECT_GT(banner, f.named("Purlock")->mapTo(&f.surface, QPoint()).y());
    EXPECT_LT(banner, picker->mapTo(&f.surface, QPoint()).y());
    f.show(panelInState("nothing-playing"));
    EXPECT_EQ(picker, &f.menuButton());
}

TEST(ViewTree, TheFocusSurvivesARefresh) {
    Fixture f;
    f.show(panelInState("nothing-playing"));
    f.named("Quit")->setFocus(Qt::TabFocusReason);
    f.show(panelInState("accessibility-banner"));
    EXPECT_EQ(QApplication::focusWidget(), f.named("Quit"));
}

TEST(ViewTree, TheScrollPositionSurvivesARefresh) {
    Fixture f;
    f.show(panelInState("bluetooth"));
    f.scroll().verticalScrollBar()->setValue(120);
    f.show(panelInState("bluetooth"));
    EXPECT_EQ(f.scroll().verticalScrollBar()->value(), 120);
}

TEST(ViewTree, AnOpenMenuSurvivesARefresh) {
    Fixture f;
    f.show(panelInState("bit-perfect"));
    QMenu* menu = f.menuButton().menu();
    menu->popup({0, 0});
    ASSERT_TRUE(menu->isVisible());
    f.show(panelInState("resampling"));
    EXPECT_TRUE(menu->isVisible());
    menu->close();
}

/// Notes which widgets of a window get an event of one type.
class EventCounter final : public QObject {
  public:
    EventCounter(QWidget& window, QEvent::Type type) : type_(type) {
        for (QWidget* widget : window.findChildren<QWidget*>()) widget->installEventFilter(this);
    }

    /// The names of the widgets that got it since the last call.
    QStringList take() { return std::exchange(widgets_, {}); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == type_) {
            const auto* widget = static_cast<QWidget*>(watched);
            widgets_.append(widget->accessibleName() + QLatin1Char(' ') +
                            QString::fromUtf8(widget->metaObject()->className()));
        }
        return false;
    }

  private:
    const QEvent::Type type_;
    QStringList widgets_;
};

TEST(ViewTree, AnEqualPictureIsNotPaintedAgain) {
    Fixture f;
    f.show(panelInState("resampling"));
    QTest::qWait(20);
    EventCounter counter(f.surface, QEvent::Paint);
    f.show(panelInState("resampling"));
    QTest::qWait(20);
    EXPECT_EQ(counter.take().join(QStringLiteral(", ")).toStdString(), "");
}

TEST(ViewTree, AnEqualPictureIsNotLaidOutAgain) {
    for (const auto& state : test::panelStates()) {
        SCOPED_TRACE(state.name);
        Fixture f;
        f.show(state.view);
        QTest::qWait(20);
        EventCounter counter(f.surface, QEvent::LayoutRequest);
        f.show(state.view);
        QTest::qWait(20);
        EXPECT_EQ(counter.take().join(QStringLiteral(", ")).toStdString(), "");
    }
}

TEST(ViewTree, OnlyTheTextThatDiffersIsPainted) {
    Fixture f;
    const auto items = [](const char* second) {
        return std::vector<View>{line("one", {12}, white()), line(second, {12}, white()),
                                 line("three", {12}, white())};
    };
    f.showItems(items("two"));
    QTest::qWait(20);
    EventCounter counter(f.surface, QEvent::Paint);
    f.showItems(items("owt"));
    QTest::qWait(20);
    for (const QString& painted : counter.take()) {
        EXPECT_FALSE(painted.startsWith(QStringLiteral("one")) || painted.startsWith(QStringLiteral("three")))
            << painted.toStdString();
    }
    EXPECT_EQ(f.all<QLabel>().at(1)->text(), QStringLiteral("owt"));
}

View pulse(double opacity) {
    View dot = disc(6, accentGreen);
    auto& circle = std::get<Circle>(dot.content);
    circle.opacity = opacity;
    circle.animation = EaseOut{0.5};
    dot.label = "Pulse";
    return dot;
}

TEST(ViewTree, ADotThatFadesIsPaintedNoOftenerThanItMust) {
    Fixture f;
    f.showItems({pulse(0.35)});
    QTest::qWait(20);
    EventCounter counter(f.surface, QEvent::Paint);
    f.showItems({pulse(0.95)});
    QTest::qWait(700);
    const auto frames = counter.take().filter(QStringLiteral("Pulse")).size();
    EXPECT_GE(frames, 5);
    EXPECT_LE(frames, 13);
    const QPoint center = f.named("Pulse")->mapTo(&f.surface, QPoint(3, 3));
    EXPECT_GT(f.surface.grab().toImage().pixelColor(center).green(), 180) << "it has come to its end";
}

// Order.

TEST(ViewTree, TheTabKeyGoesFromTopToBottom) {
    Fixture f;
    f.show(panelInState("nothing-playing"));
    f.show(panelInState("accessibility-banner"));
    Texts names;
    f.named("Pin (keep panel open)")->setFocus(Qt::TabFocusReason);
    for (int i = 0; i < 6; ++i) {
        names.push_back(QApplication::focusWidget()->accessibleName().left(20).toStdString());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(names, (Texts{"Pin (keep panel open", "Enable Accessibility", "Topaz E30", "Log to file",
                            "Show log", "Quit"}));
}

// Controls.

TEST(ViewTree, AButtonIsUsedByMouseSpaceAndReturn) {
    Fixture f;
    f.showItems({button("Quit", Quit{})});
    QWidget* quit = f.named("Quit");
    QTest::mouseClick(quit, Qt::LeftButton);
    quit->setFocus();
    QTest::keyClick(quit, Qt::Key_Space);
    QTest::keyClick(quit, Qt::Key_Return);
    QTest::qWait(150);  // the Return key shows the button pressed for a moment
    EXPECT_EQ(f.performed, (std::vector<Action>{Quit{}, Quit{}, Quit{}}));
}

TEST(ViewTree, AnActionThatChangesIsPerformedAsItIsShown) {
    Fixture f;
    f.showItems({button("Go", Quit{})});
    f.showItems({button("Go", OpenLog{})});
    QTest::mouseClick(f.named("Go"), Qt::LeftButton);
    EXPECT_EQ(f.performed, std::vector<Action>{OpenLog{}});
}

TEST(ViewTree, TheSwitchShowsItsStateAndAsksForTheOther) {
    Fixture f;
    const auto logSwitch = [](bool on) {
        return container(Switch{on, ToggleLogEnabled{}}, {line("Log to file", {11}, white())});
    };
    f.showItems({logSwitch(true)});
    auto* box = f.all<QCheckBox>().at(0);
    EXPECT_TRUE(box->isChecked());
    QTest::mouseClick(box, Qt::LeftButton);
    EXPECT_EQ(f.performed, std::vector<Action>{ToggleLogEnabled{}});
    f.showItems({logSwitch(true)});
    EXPECT_TRUE(box->isChecked()) << "it shows what is, not what was asked for";
    f.showItems({logSwitch(false)});
    EXPECT_FALSE(box->isChecked());
}

TEST(ViewTree, TheMenuOffersItsEntriesAsPlainText) {
    Fixture f;
    const View face = line("Desk", {12}, white());
    f.showItems({container(
        Menu{{MenuItem{"System default", PinDevice{}}, MenuSeparator{}, MenuItem{"R&D <b>", PinDevice{"x"}}}},
        {face})});
    const auto actions = f.menuButton().menu()->actions();
    ASSERT_EQ(actions.size(), 3);
    EXPECT_EQ(actions[0]->text(), QStringLiteral("System default"));
    EXPECT_TRUE(actions[1]->isSeparator());
    EXPECT_EQ(actions[2]->text(), QStringLiteral("R&&D <b>"));
    actions[2]->trigger();
    actions[0]->trigger();
    EXPECT_EQ(f.performed, (std::vector<Action>{PinDevice{"x"}, PinDevice{}}));
}

TEST(ViewTree, ALowWindowScrollsToEverything) {
    Fixture f;
    f.show(panelInState("bit-perfect"));
    f.surface.setFixedSize(360, 400);
    QScrollBar& bar = *f.scroll().verticalScrollBar();
    bar.setValue(bar.maximum());
    f.show(panelInState("bit-perfect"));
    EXPECT_EQ(bar.value(), bar.maximum()) << "a refresh moves nothing";
    const QWidget* quit = f.named("Quit");
    EXPECT_LE(quit->mapTo(&f.surface, QPoint(0, quit->height())).y(), 400);
}

TEST(ViewTree, EscapeAndClosingTheWindowCancel) {
    Fixture f;
    f.showItems({button("Quit", Quit{})});
    QTest::keyClick(f.named("Quit"), Qt::Key_Escape);
    EXPECT_EQ(f.cancelled, 1);
    f.surface.close();
    EXPECT_EQ(f.cancelled, 2);
}

// Texts.

TEST(ViewTree, TextsAreNeverMarkup) {
    Fixture f;
    f.showItems({line("<b>bold</b> &amp; more", {12}, white())});
    auto* label = f.all<QLabel>().at(0);
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_EQ(label->text(), QStringLiteral("<b>bold</b> &amp; more"));
}

TEST(ViewTree, ALineThatIsTooLongIsCutOffAndHoveringShowsIt) {
    Fixture f;
    const std::string words = "<i>" + std::string(200, 'x');
    f.showItems({line(words, {12}, white())});
    auto* label = f.all<QLabel>().at(0);
    EXPECT_LE(label->width(), 328);
    EXPECT_TRUE(label->toolTip().contains(QStringLiteral("&lt;i&gt;xxx"))) << "not as markup";
    f.showItems({line("short", {12}, white())});
    EXPECT_EQ(label->toolTip(), QString());
}

TEST(ViewTree, AParagraphBreaksEvenInsideAWord) {
    Fixture f;
    f.showItems({paragraph(std::string(300, 'x'), {12}, white())});
    auto* label = f.all<QLabel>().at(0);
    EXPECT_EQ(label->width(), 328);
    EXPECT_GE(label->height(), 5 * label->fontMetrics().height());
    f.showItems({paragraph("x", {12}, white())});
    EXPECT_LT(label->height(), 2 * label->fontMetrics().height()) << "it shrinks again";
}

TEST(ViewTree, ANewHeightIsThereBeforeAnythingIsPainted) {
    Fixture f;
    const auto card = [](const std::string& words) {
        View text = row(8, {disc(7, white()), column(4, {paragraph(words, {12}, white())})});
        return std::vector<View>{container(Button{Quit{}}, {onCard(std::move(text), {10, 10}, 0.1)}),
                                 line("below", {12}, white())};
    };
    f.showItems(card("short"));
    View content = column(14, card(std::string(400, 'x')));
    content.padding = {16, 16};
    f.surface.setContent(container(Scroll{}, {std::move(content)}));
    const auto* label = f.all<QLabel>().at(1);
    EXPECT_EQ(label->height(), label->heightForWidth(label->width()));
    EXPECT_GT(f.named("below")->mapTo(&f.surface, QPoint()).y(),
              label->mapTo(&f.surface, QPoint(0, label->height())).y());
}

TEST(ViewTree, FontsAreAsTheTreeSays) {
    struct Case {
        Font font;
        QFont::Weight weight;
        bool italic;
    };
    for (const auto& [font, weight, italic] :
         {Case{{10}, QFont::Normal, false}, Case{{12, FontWeight::medium}, QFont::Medium, false},
          Case{{13, FontWeight::semibold}, QFont::DemiBold, false},
          Case{{16, FontWeight::bold}, QFont::Bold, false},
          Case{{11, FontWeight::regular, FontSlant::italic}, QFont::Normal, true}}) {
        Fixture f;
        f.showItems({line("text", font, white())});
        const QFont shown = f.all<QLabel>().at(0)->font();
        EXPECT_EQ(shown.pixelSize(), static_cast<int>(font.size));
        EXPECT_EQ(shown.weight(), weight) << font.size;
        EXPECT_EQ(shown.italic(), italic) << font.size;
    }
}

TEST(ViewTree, LineBreaksAndControlCharactersBecomeSpaces) {
    Fixture f;
    f.showItems(
        {line("one\ntwo\tthree\x01"
              "four\xE2\x80\xA8"
              "five",
              {12}, white())});
    EXPECT_EQ(f.all<QLabel>().at(0)->text(), QStringLiteral("one two three four five"));
}

TEST(ViewTree, AnEndlessTextIsBounded) {
    Fixture f;
    f.showItems({paragraph(std::string(1'000'000, 'x'), {12}, white())});
    EXPECT_LE(f.all<QLabel>().at(0)->text().size(), 2000);
}

// Screen readers.

TEST(ViewTree, ScreenReadersKnowTheControls) {
    Fixture f;
    f.show(panelInState("unplugged-pin"));
    struct Case {
        const char* name;
        QAccessible::Role role;
        const char* description;
    };
    for (const auto& [name, role, description] :
         {Case{"Unpin (close on outside click)", QAccessible::Button, "Unpin (close on outside click)"},
          Case{"📌 (pinned device unplugged)", QAccessible::ButtonMenu, "Output device"},
          Case{"Log to file", QAccessible::CheckBox, ""}, Case{"Show log", QAccessible::Button, ""},
          Case{"Quit", QAccessible::Button, ""}, Case{"Bit-perfect", QAccessible::StaticText, ""},
          Case{"Lossless", QAccessible::StaticText, ""}}) {
        QAccessibleInterface* seen = QAccessible::queryAccessibleInterface(f.named(name));
        ASSERT_NE(seen, nullptr) << name;
        EXPECT_EQ(seen->role(), role) << name;
        EXPECT_EQ(seen->text(QAccessible::Name), QString::fromUtf8(name));
        EXPECT_EQ(seen->text(QAccessible::Description), QString::fromUtf8(description)) << name;
    }
}

}  // namespace
}  // namespace purlock
