#include "source/accessibility_scraper.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/fake_accessibility.h"
#include "tests/support/fake_running_applications.h"

namespace purlock {
namespace {

using test::elementWith;
using test::elementWithChildren;
using test::FakeElement;

constexpr std::array<std::string_view, 6> tidal = {"HI-RES LOSSLESS", "HI-RES", "MAX",
                                                   "LOSSLESS",        "HIGH",   "NORMAL"};
constexpr std::array<std::string_view, 4> appleMusic = {"Hi-Res Lossless", "Lossless", "High Quality",
                                                        "Dolby Atmos"};
constexpr std::array<std::string_view, 3> spotify = {"Very High", "High", "Normal"};

constexpr const char* player = "com.example.player";

/// A running player whose top element the test makes.
struct Fixture {
    test::FakeRunningApplications applications;
    test::FakeAccessibilityTree tree;

    Fixture() { applications.setRunning({{100, player, std::nullopt}}); }

    std::optional<std::string> scrape(std::shared_ptr<AccessibilityElement> top,
                                      std::span<const std::string_view> patterns) {
        tree.setApplication(100, std::move(top));
        return AccessibilityScraper::scrape(tree, applications, player, patterns);
    }
};

/// An element with `badge` at `depth`, below elements that have one child each.
std::shared_ptr<AccessibilityElement> badgeAtDepth(int depth, const std::string& badge) {
    std::shared_ptr<AccessibilityElement> element = elementWith("AXTitle", badge);
    for (int i = 0; i < depth; ++i) element = elementWithChildren({element});
    return element;
}

// Who is asked

TEST(AccessibilityScraper, WithoutPermissionNoElementIsMade) {
    Fixture host;
    host.tree.setTrusted(false);
    EXPECT_EQ(host.scrape(elementWith("AXValue", "HIGH"), tidal), std::nullopt);
    EXPECT_TRUE(host.tree.created().empty());
}

TEST(AccessibilityScraper, AnApplicationThatDoesNotRunHasNoBadge) {
    Fixture host;
    host.applications.setRunning({{100, "com.example.other", std::nullopt}});
    EXPECT_EQ(host.scrape(elementWith("AXValue", "HIGH"), tidal), std::nullopt);
    EXPECT_TRUE(host.tree.created().empty());
}

TEST(AccessibilityScraper, OnlyTheFirstRunningInstanceIsWalked) {
    Fixture host;
    host.applications.setRunning({{200, player, std::nullopt}, {100, player, std::nullopt}});
    host.tree.setApplication(200, std::make_shared<FakeElement>());
    EXPECT_EQ(host.scrape(elementWith("AXValue", "HIGH"), tidal), std::nullopt);
    EXPECT_EQ(host.tree.created(), std::vector<std::int32_t>{200});
}

TEST(AccessibilityScraper, TheWalkStartsAtTheApplicationItself) {
    Fixture host;
    EXPECT_EQ(host.scrape(elementWith("AXTitle", "High"), tidal), "High");
}

// How deep

struct DepthRow {
    int depth;
    bool found;
};

constexpr DepthRow depthRows[] = {{0, true}, {1, true}, {11, true}, {12, true}, {13, false}, {40, false}};

TEST(AccessibilityScraper, LooksDownToDepthTwelve) {
    for (const DepthRow& row : depthRows) {
        SCOPED_TRACE(row.depth);
        Fixture host;
        EXPECT_EQ(host.scrape(badgeAtDepth(row.depth, "HIGH"), tidal).has_value(), row.found);
    }
}

TEST(AccessibilityScraper, AWalkThatBeginsBelowTheLimitFindsNothing) {
    FakeElement element(FakeElement::Attributes{{"AXValue", "high"}});
    EXPECT_EQ(AccessibilityScraper::walk(element, {"high"}, 12), "high");
    EXPECT_EQ(AccessibilityScraper::walk(element, {"high"}, 13), std::nullopt);
}

TEST(AccessibilityScraper, ACycleEndsAtTheDepthLimit) {
    Fixture host;
    const auto element = std::make_shared<FakeElement>();
    element->set("AXChildren", AccessibilityElements{element});
    EXPECT_EQ(host.scrape(element, tidal), std::nullopt);
    EXPECT_EQ(element->reads().size(), 13U * 5U);
    element->set("AXChildren", AccessibilityElements{});
}

// In which order

struct AttributeRow {
    const char* name;
    FakeElement::Attributes attributes;
    std::optional<std::string> badge;
};

const std::vector<AttributeRow>& attributeRows() {
    const AttributeValue other = OtherAttributeType{};
    static const std::vector<AttributeRow> rows = {
        {"value alone", {{"AXValue", "High"}}, "High"},
        {"title alone", {{"AXTitle", "High"}}, "High"},
        {"description alone", {{"AXDescription", "High"}}, "High"},
        {"help alone", {{"AXHelp", "High"}}, "High"},
        {"another attribute", {{"AXRole", "High"}}, std::nullopt},
        {"value before title", {{"AXValue", "Normal"}, {"AXTitle", "High"}}, "Normal"},
        {"title before description", {{"AXTitle", "Normal"}, {"AXDescription", "High"}}, "Normal"},
        {"description before help", {{"AXDescription", "Normal"}, {"AXHelp", "High"}}, "Normal"},
        {"value before help", {{"AXValue", "Normal"}, {"AXHelp", "Very High"}}, "Normal"},
        {"a value without a pattern", {{"AXValue", "0:42"}, {"AXTitle", "High"}}, "High"},
        {"an empty value", {{"AXValue", ""}, {"AXTitle", "High"}}, "High"},
        {"a value of another type", {{"AXValue", other}, {"AXHelp", "High"}}, "High"},
        {"an array as value", {{"AXValue", AccessibilityElements{}}, {"AXHelp", "High"}}, "High"},
        {"nothing but other types",
         {{"AXValue", other}, {"AXTitle", other}, {"AXChildren", other}},
         std::nullopt},
        {"children that are a text", {{"AXChildren", "High"}}, std::nullopt},
    };
    return rows;
}

TEST(AccessibilityScraper, AnEarlierAttributeWinsOverABetterPattern) {
    for (const AttributeRow& row : attributeRows()) {
        SCOPED_TRACE(row.name);
        Fixture host;
        EXPECT_EQ(host.scrape(std::make_shared<FakeElement>(row.attributes), spotify), row.badge);
    }
}

TEST(AccessibilityScraper, ReadsTheAttributesInOrderAndTheChildrenLast) {
    Fixture host;
    const auto element = std::make_shared<FakeElement>();
    EXPECT_EQ(host.scrape(element, spotify), std::nullopt);
    EXPECT_EQ(element->reads(),
              (std::vector<std::string>{"AXValue", "AXTitle", "AXDescription", "AXHelp", "AXChildren"}));
}

TEST(AccessibilityScraper, StopsReadingAtTheFirstMatch) {
    Fixture host;
    const auto child = elementWith("AXValue", "Normal");
    const auto element = elementWithChildren({child});
    element->set("AXTitle", "High");
    EXPECT_EQ(host.scrape(element, spotify), "High");
    EXPECT_EQ(element->reads(), (std::vector<std::string>{"AXValue", "AXTitle"}));
    EXPECT_TRUE(child->reads().empty());
}

TEST(AccessibilityScraper, AnElementsOwnTextsComeBeforeItsChildren) {
    Fixture host;
    const auto element = elementWithChildren({elementWith("AXValue", "Very High")});
    element->set("AXHelp", "Normal");
    EXPECT_EQ(host.scrape(element, spotify), "Normal");
}

TEST(AccessibilityScraper, AFirstChildsGrandchildComesBeforeASecondChild) {
    Fixture host;
    const auto first = elementWithChildren({elementWithChildren({elementWith("AXHelp", "Normal")})});
    EXPECT_EQ(host.scrape(elementWithChildren({first, elementWith("AXValue", "Very High")}), spotify),
              "Normal");
}

TEST(AccessibilityScraper, ChildrenAreTakenInTheirOrder) {
    Fixture host;
    const auto top = elementWithChildren(
        {elementWith("AXValue", "0:42"), elementWith("AXValue", "High"), elementWith("AXValue", "Normal")});
    EXPECT_EQ(host.scrape(top, spotify), "High");
}

TEST(AccessibilityScraper, ABranchThatFailsDoesNotEndTheWalk) {
    Fixture host;
    const auto deaf = std::make_shared<FakeElement>();
    const auto odd = elementWith("AXChildren", OtherAttributeType{});
    const auto tooDeep = badgeAtDepth(12, "Very High");
    EXPECT_EQ(
        host.scrape(elementWithChildren({deaf, odd, tooDeep, elementWith("AXHelp", "Normal")}), spotify),
        "Normal");
}

// What matches, and how it is returned

struct TextRow {
    const char* name;
    std::span<const std::string_view> patterns;
    std::string text;
    std::optional<std::string> badge;
};

const TextRow textRows[] = {
    {"as the pattern is written", tidal, "HI-RES LOSSLESS", "HI-RES LOSSLESS"},
    {"in other letters", tidal, "hi-Res losslesS", "hi-Res losslesS"},
    {"the pattern in small letters", appleMusic, "DOLBY ATMOS", "DOLBY ATMOS"},
    {"the second pattern, brackets kept", tidal, "Lossless (Hi-Res)", "Lossless (Hi-Res)"},
    {"every Tidal pattern: MAX", tidal, "max", "max"},
    {"every Tidal pattern: LOSSLESS", tidal, "Lossless", "Lossless"},
    {"every Tidal pattern: HIGH", tidal, "High", "High"},
    {"every Tidal pattern: NORMAL", tidal, "Normal", "Normal"},
    {"every Apple Music pattern: Lossless", appleMusic, "lossless", "lossless"},
    {"every Apple Music pattern: High Quality", appleMusic, "high quality", "high quality"},
    {"every Spotify pattern: Very High", spotify, "Very High", "Very High"},
    {"every Spotify pattern: Normal", spotify, "normal", "normal"},
    {"a track title that holds a pattern", tidal, "Ain't No Mountain High Enough",
     "Ain't No Mountain High Enough"},
    {"part of a word", tidal, "Climax", "Climax"},
    {"part of a pattern", appleMusic, "Hi-Res", std::nullopt},
    {"two blanks between the words", appleMusic, "Dolby  Atmos", std::nullopt},
    {"an empty text", tidal, "", std::nullopt},
    {"two blanks before and a line break behind", appleMusic, "  Hi-Res Lossless\n", "Hi-Res Lossless"},
    {"tabs and carriage returns", tidal, "\t\r\nHIGH\r\n\t", "HIGH"},
    {"form feeds and vertical tabs", tidal, "\f\vHIGH\v\f", "HIGH"},
    {"no-break spaces", tidal, "\u00A0HIGH\u00A0", "HIGH"},
    {"a next line", tidal, "\u0085HIGH\u0085", "HIGH"},
    {"line and paragraph separators", tidal, "\u2028HIGH\u2029", "HIGH"},
    {"em, thin and ideographic spaces", tidal, "\u2003\u2009HIGH\u3000", "HIGH"},
    {"white space inside stays", tidal, " HI-RES\n LOSSLESS ", "HI-RES\n LOSSLESS"},
    {"bytes that are no text", tidal, "\xFF HIGH \xC0", "\xFF HIGH \xC0"},
    {"a zero byte", tidal, std::string("a\0HIGH", 6), std::string("a\0HIGH", 6)},
};

TEST(AccessibilityScraper, ReturnsTheTextAsReadWithoutTheWhiteSpaceAroundIt) {
    for (const TextRow& row : textRows) {
        SCOPED_TRACE(row.name);
        Fixture host;
        EXPECT_EQ(host.scrape(elementWith("AXValue", row.text), row.patterns), row.badge);
    }
}

TEST(AccessibilityScraper, WithoutPatternsNothingMatches) {
    Fixture host;
    EXPECT_EQ(host.scrape(elementWith("AXValue", "HIGH"), {}), std::nullopt);
}

TEST(AccessibilityScraper, ScrapeLowersThePatternsAndWalkTakesThemAsTheyAre) {
    FakeElement element(FakeElement::Attributes{{"AXValue", "High"}});
    EXPECT_EQ(AccessibilityScraper::walk(element, {"high"}, 0), "High");
    EXPECT_EQ(AccessibilityScraper::walk(element, {"High"}, 0), std::nullopt);
}

}  // namespace
}  // namespace purlock
