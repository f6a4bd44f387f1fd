// The view tree as AppKit's views: what each element becomes, and what stays when the tree changes.

#include "platform/macos/appkit/colors.h"
#include "platform/macos/appkit/drawn_view.h"
#include "tests/macos/objc/mac_fixture.h"
#include "tests/macos/standins/inspection.h"
#include "tests/macos/standins/values.h"
#include "tests/support/view_reading.h"
#include "ui/view_parts.h"

namespace purlock::host_macos {
namespace {

using namespace standins;

using Lines = std::vector<std::string>;

struct MacViews : test::MacFixture {
    std::vector<Action> performed;
    const DrawnView::OnAction perform = [this](const Action& action) { performed.push_back(action); };

    MacViews() { takeConstraints(); }

    template <typename ViewClass>
    static ViewClass* only(const DrawnView& drawn, Class type) {
        const auto found = viewsOfClass(drawn.view(), type);
        EXPECT_EQ(found.size(), 1U);
        return found.empty() ? nil : static_cast<ViewClass*>(found.front());
    }
};

TEST_F(MacViews, ALineOfText) {
    const Color color{0.1, 0.2, 0.3, 0.4};
    const DrawnView drawn(line("A <b>title</b>", {12, FontWeight::medium, FontSlant::italic}, color),
                          perform);
    auto* const field = only<NSTextField>(drawn, [NSTextField class]);
    EXPECT_EQ(utf8(field.stringValue), "A <b>title</b>") << "plain, not markup";
    EXPECT_EQ(factsOf(field.font), (FontFacts{12, NSFontWeightMedium, true}));
    EXPECT_EQ(componentsOf(field.textColor), color);
    EXPECT_EQ(field.lineBreakMode, NSLineBreakByTruncatingTail);
    EXPECT_FALSE(field.isSelectable);
}

TEST_F(MacViews, AParagraphIsNeverToldAWidth) {
    const DrawnView drawn(paragraph("long", {11}, white()), perform);
    auto* const field = only<NSTextField>(drawn, [NSTextField class]);
    EXPECT_EQ(field.lineBreakMode, NSLineBreakByWordWrapping);
    EXPECT_FALSE(field.isSelectable);
    EXPECT_EQ(field.preferredMaxLayoutWidth, 0) << "else it would stay as narrow as it once was";
    EXPECT_EQ(field.maximumNumberOfLines, 0);
    EXPECT_FALSE(field.usesSingleLineMode);
}

TEST_F(MacViews, ALineStaysOne) {
    const DrawnView drawn(line("a title\nwith a line feed", {12}, white()), perform);
    auto* const field = only<NSTextField>(drawn, [NSTextField class]);
    EXPECT_TRUE(field.usesSingleLineMode);
    EXPECT_EQ(field.maximumNumberOfLines, 1);
}

TEST_F(MacViews, ATextGivesWayInItsWidthAlone) {
    const DrawnView drawn(line("x", {12}, white()), perform);
    EXPECT_EQ(prioritiesOf(only<NSTextField>(drawn, [NSTextField class])),
              (Lines{"hugging horizontal 750", "hugging vertical 750", "resistance horizontal 200"}));
}

TEST_F(MacViews, AStackHugsInItsOwnWayAndAScrollNotAtAll) {
    const DrawnView stack(row(0, {line("x", {12}, white())}), perform);
    EXPECT_EQ(prioritiesOf(subviewsOf(stack.view()).front()), Lines{"stack hugging horizontal 200"});
    const DrawnView scroll(container(Scroll{}, {column(0, {})}), perform);
    EXPECT_TRUE(prioritiesOf(subviewsOf(scroll.view()).front()).empty());
    for (const std::string& call : world.takeCalls()) EXPECT_NE(call, "hugging of no effect");
}

TEST_F(MacViews, WhatIsDrawnAndHasWordsSaysThem) {
    View dot = element(Circle{6, accentRed, {}, 1, {}});
    const DrawnView ornament(dot, perform);
    EXPECT_FALSE(accessibilityOf(subviewsOf(ornament.view()).front()).isElement);
    dot.label = "High severity";
    const DrawnView drawn(dot, perform);
    EXPECT_EQ(accessibilityOf(subviewsOf(drawn.view()).front()),
              (AccessibilityFacts{true, "High severity", "AXImage", ""}));
    View pulse = element(Circle{6, accentGreen, {}, 1, {}});
    pulse.help = "Live";
    const DrawnView told(pulse, perform);
    EXPECT_EQ(accessibilityOf(subviewsOf(told.view()).front()),
              (AccessibilityFacts{true, "Live", "AXImage", ""}));
}

TEST_F(MacViews, FontWeights) {
    EXPECT_EQ(weightOf(FontWeight::regular), NSFontWeightRegular);
    EXPECT_EQ(weightOf(FontWeight::medium), NSFontWeightMedium);
    EXPECT_EQ(weightOf(FontWeight::semibold), NSFontWeightSemibold);
    EXPECT_EQ(weightOf(FontWeight::bold), NSFontWeightBold);
}

TEST_F(MacViews, ASymbol) {
    const DrawnView drawn(symbol("hifispeaker.fill", {10, FontWeight::bold}, accentGreen), perform);
    auto* const image = only<NSImageView>(drawn, [NSImageView class]);
    EXPECT_EQ(factsOf(image.image).name, "hifispeaker.fill");
    EXPECT_EQ(factsOf(image.image).pointSize, 10);
    EXPECT_EQ(factsOf(image.image).weight, NSFontWeightBold);
    EXPECT_EQ(componentsOf(image.contentTintColor), accentGreen);
}

TEST_F(MacViews, ACircleIsDrawnAndFadesOnlyWhenItChanges) {
    View dot = element(Circle{6, accentGreen, Stroke{accentRed, 1.5}, 0.35, EaseOut{0.25}});
    DrawnView drawn(dot, perform);
    NSView* const shape = subviewsOf(drawn.view()).front();
    EXPECT_EQ(shape.alphaValue, 0.35);
    EXPECT_EQ(takeConstraints()[0], "width = 6");
    [shape drawRect:shape.bounds];
    EXPECT_EQ(world.takeCalls(), (Lines{"oval 0.75 -1.5", "setFill", "fill", "setStroke", "stroke 1.5"}));
    std::get<Circle>(dot.content).opacity = 0.95;
    drawn.show(dot);
    EXPECT_EQ(shape.alphaValue, 0.95);
    drawn.show(dot);
    EXPECT_EQ(world.takeCalls(), Lines{"animated 0.25 easeOut"});
}

TEST_F(MacViews, PaddingBackgroundHelpAndFrame) {
    View card = onCard(line("x", {12}, white()), {6, 10}, 0.08);
    card.help = "why";
    card.frame = Size{100, 20};
    const DrawnView drawn(card, perform);
    EXPECT_EQ(takeConstraints(), (Lines{"top = top + 6", "bottom = bottom + 6", "leading = leading + 10",
                                        "trailing = trailing + 10", "width = 100", "height = 20"}));
    EXPECT_EQ(utf8(drawn.view().toolTip), "why");
    EXPECT_TRUE(drawn.view().isFlipped);
    world.takeCalls();
    [drawn.view() drawRect:drawn.view().bounds];
    EXPECT_EQ(world.takeCalls(), (Lines{"setFill", "rounded rectangle 6", "fill"}));
}

const ConstraintFacts* constraintOn(const std::vector<ConstraintFacts>& all, const std::string& attribute) {
    const auto found = std::ranges::find(all, attribute, &ConstraintFacts::firstAttribute);
    return found == all.end() ? nullptr : &*found;
}

TEST_F(MacViews, ThePaddingLiesInside) {
    const DrawnView drawn(onCard(line("x", {12}, white()), {6, 10}, 0.08), perform);
    NSView* const outer = drawn.view();
    NSView* const inner = subviewsOf(outer).front();
    const auto all = constraintsBetween(outer, inner);
    const struct {
        const char* attribute;
        NSView* larger;  // the one whose edge has the larger coordinate
        double constant;
    } rows[] = {{"top", inner, 6}, {"bottom", outer, 6}, {"leading", inner, 10}, {"trailing", outer, 10}};
    ASSERT_EQ(all.size(), std::size(rows));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.attribute);
        const auto* const constraint = constraintOn(all, row.attribute);
        ASSERT_NE(constraint, nullptr);
        const bool isTurned = constraint->first != (__bridge void*)row.larger;
        EXPECT_EQ(constraint->firstAttribute, constraint->secondAttribute);
        EXPECT_TRUE(constraint->isEqual);
        EXPECT_EQ(isTurned ? -constraint->constant : constraint->constant, row.constant);
    }
}

TEST_F(MacViews, AColumnStretchesWhatWantsItsWidth) {
    View wide = line("wide", {12}, white());
    wide.width = Width::available;
    const View tree = column(7, {line("narrow", {12}, white()), wide,
                                 row(0, {line("a", {12}, white()), flexibleSpace()}), element(Divider{})});
    const DrawnView drawn(tree, perform);
    NSStackView* const stack = static_cast<NSStackView*>(subviewsOf(drawn.view()).front());
    EXPECT_EQ(stack.orientation, NSUserInterfaceLayoutOrientationVertical);
    EXPECT_EQ(stack.alignment, NSLayoutAttributeLeading);
    EXPECT_EQ(stack.distribution, NSStackViewDistributionFill);
    EXPECT_EQ(stack.spacing, 7);
    const auto constraints = takeConstraints();
    EXPECT_EQ(std::ranges::count(constraints, "width = width"), 3);
    EXPECT_EQ(std::ranges::count(constraints, "trailing <= trailing"), 1);
    EXPECT_EQ(only<NSBox>(drawn, [NSBox class]).boxType, NSBoxSeparator);
}

TEST_F(MacViews, ABarOfNoHeightIsAsHighAsItsRow) {
    const DrawnView drawn(row(3, {element(Bar{2, {}, accentRed}), line("x", {12}, white())}), perform);
    NSStackView* const stack = static_cast<NSStackView*>(subviewsOf(drawn.view()).front());
    EXPECT_EQ(stack.orientation, NSUserInterfaceLayoutOrientationHorizontal);
    EXPECT_EQ(stack.alignment, NSLayoutAttributeCenterY);
    const auto constraints = takeConstraints();
    EXPECT_EQ(std::ranges::count(constraints, "height = height"), 1);
    EXPECT_EQ(std::ranges::count(constraints, "width = 2"), 1);
}

TEST_F(MacViews, TheScrolledPartFollowsItsClip) {
    const DrawnView drawn(container(Scroll{}, {column(0, {})}), perform);
    auto* const scroll = only<NSScrollView>(drawn, [NSScrollView class]);
    EXPECT_TRUE(scroll.hasVerticalScroller);
    EXPECT_FALSE(scroll.drawsBackground);
    EXPECT_EQ(scroll.documentView.superview, scroll.contentView);
    EXPECT_TRUE(scroll.documentView.isFlipped) << "it begins at the top";
    const auto all = constraintsBetween(scroll.documentView, scroll.contentView);
    for (const char* const edge : {"top", "leading", "trailing"}) {
        const auto* const constraint = constraintOn(all, edge);
        ASSERT_NE(constraint, nullptr) << edge;
        EXPECT_EQ(constraint->secondAttribute, edge);
        EXPECT_EQ(constraint->constant, 0);
    }
    EXPECT_EQ(all.size(), 3U) << "its height is its own";
}

TEST_F(MacViews, AButtonTakesTheClicksOnItsFaceAndTheFirstOne) {
    View button = container(Button{OpenLog{}}, {line("Show log", {11}, white())});
    DrawnView drawn(button, perform);
    auto* const shown = only<NSButton>(drawn, [NSButton class]);
    EXPECT_EQ(utf8(accessibilityLabelOf(shown)), "Show log");
    EXPECT_FALSE(shown.isBordered);
    EXPECT_EQ(shown.intrinsicContentSize.width, NSViewNoIntrinsicMetric) << "the face says how large it is";
    EXPECT_EQ(shown.intrinsicContentSize.height, NSViewNoIntrinsicMetric);
    EXPECT_TRUE([shown acceptsFirstMouse:nil]);
    EXPECT_EQ([shown hitTest:NSMakePoint(1, 1)], shown);
    click(shown);
    std::get<Button>(button.content).action = Quit{};
    drawn.show(button);
    click(shown);
    EXPECT_EQ(performed, (std::vector<Action>{OpenLog{}, Quit{}}));
}

TEST_F(MacViews, AButtonMayEndItselfByItsAction) {
    std::unique_ptr<DrawnView> drawn;
    const DrawnView::OnAction end = [&drawn](const Action&) { drawn.reset(); };
    drawn = std::make_unique<DrawnView>(container(Button{Quit{}}, {line("Quit", {11}, white())}), end);
    auto* const button = only<NSButton>(*drawn, [NSButton class]);
    click(button);
    EXPECT_EQ(drawn, nullptr);
}

TEST_F(MacViews, AMenuOpensWithItsEntries) {
    View menu = container(Menu{{MenuItem{"System Default", PinDevice{}}, MenuSeparator{},
                                MenuItem{"Desk", PinDevice{"desk-1"}}}},
                          {line("Desk", {12}, white())});
    menu.label = "Output device";
    const DrawnView drawn(menu, perform);
    const AccessibilityFacts facts = accessibilityOf(only<NSButton>(drawn, [NSButton class]));
    EXPECT_EQ(facts.label, "Output device");
    EXPECT_EQ(facts.role, "AXPopUpButton");
    EXPECT_EQ(facts.value, "Desk");
    chooseInNextMenu("Desk");
    click(only<NSButton>(drawn, [NSButton class]));
    EXPECT_EQ(lastMenu(), (Lines{"System Default", "-", "Desk"}));
    EXPECT_EQ(performed, std::vector<Action>{PinDevice{"desk-1"}});
}

View named(std::string id, View view) {
    view.id = std::move(id);
    return view;
}

TEST_F(MacViews, WhatStaysKeepsItsPlaceAndItsViews) {
    const auto tree = [](bool hasCard, const std::string& title) {
        std::vector<View> items = {named("header", line(title, {16}, white()))};
        if (hasCard) items.push_back(named("card", line("song", {12}, white())));
        items.push_back(named("footer", container(Button{Quit{}}, {line("Quit", {11}, white())})));
        return column(8, items);
    };
    DrawnView drawn(tree(false, "one"), perform);
    NSView* const stack = subviewsOf(drawn.view()).front();
    const auto before = subviewsOf(stack);
    world.takeCalls();
    drawn.show(tree(false, "two"));
    EXPECT_EQ(subviewsOf(stack), before);
    EXPECT_TRUE(world.takeCalls().empty()) << "nothing is arranged anew";
    drawn.show(tree(true, "two"));
    const auto with = subviewsOf(stack);
    ASSERT_EQ(with.size(), 3U);
    EXPECT_EQ(with[0], before[0]);
    EXPECT_EQ(with[2], before[1]) << "the button with its focus";
    drawn.show(tree(false, "three"));
    EXPECT_EQ(subviewsOf(stack), before);
    EXPECT_EQ(utf8(static_cast<NSTextField*>(viewsOfClass(stack, [NSTextField class]).front()).stringValue),
              "three");
}

TEST_F(MacViews, AnotherKindIsDrawnAnew) {
    DrawnView drawn(row(0, {line("x", {12}, white())}), perform);
    drawn.show(row(0, {symbol("pin", {12}, white())}));
    EXPECT_TRUE(viewsOfClass(drawn.view(), [NSTextField class]).empty());
    EXPECT_EQ(viewsOfClass(drawn.view(), [NSImageView class]).size(), 1U);
}

}  // namespace
}  // namespace purlock::host_macos
