#include "tests/macos/simulated/accessibility.h"

#include <array>

#include "platform/macos/accessibility/ax_tree.h"
#include "source/accessibility_scraper.h"
#include "tests/macos/c/no_leak.h"
#include "tests/support/fake_running_applications.h"

namespace purlock::host_macos {
namespace {

using simulated::Element;

constexpr std::array<std::string_view, 2> patterns = {"hi-res", "lossless"};

Element text(const std::string& attribute, const std::string& value) {
    return {{{attribute, value}}};
}

Element parent(std::vector<Element> children) {
    return {{{"AXChildren", std::move(children)}}};
}

/// What the scraper finds in a window of this shape.
struct Walk : test::NoLeak {
    AXTree::Time time;  // stands still unless a test moves it
    AXTree tree{[this] { return time; }};
    test::FakeRunningApplications applications;

    std::optional<std::string> over(simulated::Accessibility& /*window*/) {
        applications.setRunning({{simulated::Accessibility::pid, "org.player", "Player"}});
        return AccessibilityScraper::scrape(tree, applications, "org.player", patterns);
    }
};

TEST_F(Walk, FindsABadgeWhereverItStands) {
    for (const char* const attribute : {"AXValue", "AXTitle", "AXDescription", "AXHelp"}) {
        SCOPED_TRACE(attribute);
        time += AXTree::keptFor;
        simulated::Accessibility window(
            parent({text("AXTitle", "Queue"), parent({text(attribute, " HI-RES\n")})}));
        EXPECT_EQ(over(window), "HI-RES");
        EXPECT_EQ(window.questionsWithoutLimit, 0U);
        EXPECT_GT(window.questions, 4U);
    }
}

TEST_F(Walk, WithoutThePermissionNothingIsAsked) {
    simulated::Accessibility window(text("AXValue", "LOSSLESS"), false);
    EXPECT_EQ(over(window), std::nullopt);
    EXPECT_EQ(window.questions, 0U);
}

struct ValueRow {
    const char* name;
    Element element;
};

TEST_F(Walk, WhatIsNoTextAndNoArrayOfElementsIsPassedOver) {
    const ValueRow rows[] = {
        {"a number for a text", {{{"AXValue", simulated::OtherValue{}}}}},
        {"an array for a text", {{{"AXValue", std::vector<Element>{}}}}},
        {"a text for the children", {{{"AXChildren", std::string("HIGH")}}}},
        {"something else among the children", {{{"AXChildren", simulated::MixedArray{}}}}},
    };
    for (const ValueRow& row : rows) {
        SCOPED_TRACE(row.name);
        simulated::Accessibility window(row.element);
        time += AXTree::keptFor;
        EXPECT_EQ(over(window), std::nullopt);
        EXPECT_GE(window.questions, 5U);
    }
}

TEST_F(Walk, AnApplicationThatDoesNotAnswerIsAskedOnce) {
    Element hung;
    hung.answersLate = true;
    simulated::Accessibility window(parent({hung, text("AXValue", "LOSSLESS")}));
    EXPECT_EQ(over(window), std::nullopt);
    EXPECT_EQ(window.questions, 6U) << "five of the window, one of the element that hangs";
    time += std::chrono::milliseconds(4999);
    EXPECT_EQ(over(window), std::nullopt);
    EXPECT_EQ(window.questions, 6U) << "nor in the walks of the next seconds";
    time += std::chrono::milliseconds(1);
    EXPECT_EQ(over(window), std::nullopt);
    EXPECT_EQ(window.questions, 12U);
}

TEST_F(Walk, NoAnswerIsWaitedForLongerThanATenthOfASecond) {
    simulated::Accessibility window(parent({text("AXTitle", "Queue")}));
    over(window);
    EXPECT_GT(window.longestLimit, 0.01F);
    EXPECT_LE(window.longestLimit, 0.1F);
}

/// Twenty thousand questions to an application that takes 0.2 ms for each: four seconds in all.
TEST_F(Walk, ASlowApplicationIsAskedALittleAtATime) {
    std::vector<Element> rows(3000);
    rows.push_back(text("AXValue", "LOSSLESS"));
    simulated::Accessibility window(parent(rows));
    window.onQuestion = [this] { time += std::chrono::microseconds(200); };
    std::optional<std::string> badge;
    int walks = 0;
    for (; !badge && walks < 50; ++walks) {
        const auto before = time;
        badge = over(window);
        EXPECT_LE(time - before, std::chrono::milliseconds(101));
    }
    EXPECT_EQ(badge, "LOSSLESS") << "each walk goes on where the last one ended";
    EXPECT_LE(walks, 32);
    EXPECT_LE(window.questions, 15010U) << "no question is asked twice";
}

TEST_F(Walk, ABadgeIsSeenAgainAfterSomeSeconds) {
    const auto found = [this](const char* badge) {
        simulated::Accessibility window(text("AXValue", badge));
        return over(window);
    };
    EXPECT_EQ(found("LOSSLESS"), "LOSSLESS");
    EXPECT_EQ(found("HI-RES"), "LOSSLESS");
    time += std::chrono::seconds(5);
    EXPECT_EQ(found("HI-RES"), "HI-RES");
}

TEST_F(Walk, AnEndlessWindowIsGivenUp) {
    const std::vector<Element> row(300);
    std::vector<Element> rows;
    for (int i = 0; i < 300; ++i) rows.push_back(parent(row));
    simulated::Accessibility window(parent(rows));
    EXPECT_EQ(over(window), std::nullopt);
    EXPECT_EQ(window.questions, AXTree::mostQuestions);
}

TEST_F(Walk, OneElementsChildrenAreCutShort) {
    simulated::Accessibility window(parent(std::vector<Element>(AXTree::mostChildren + 5)));
    const auto application = tree.createApplication(simulated::Accessibility::pid);
    const auto children = application->copyAttributeValue("AXChildren");
    EXPECT_EQ(std::get<AccessibilityElements>(*children).size(), AXTree::mostChildren);
}

TEST_F(Walk, AChildOutlivesItsParentAndTheArray) {
    simulated::Accessibility window(parent({text("AXTitle", "kept")}));
    std::shared_ptr<AccessibilityElement> child;
    {
        const auto children =
            tree.createApplication(simulated::Accessibility::pid)->copyAttributeValue("AXChildren");
        child = std::get<AccessibilityElements>(*children).front();
    }
    EXPECT_EQ(std::get<std::string>(*child->copyAttributeValue("AXTitle")), "kept");
}

TEST_F(Walk, ThePromptAsksTheUser) {
    simulated::Accessibility window({}, false);
    promptForAccessibility();
    EXPECT_EQ(window.prompts, 1U);
    EXPECT_FALSE(tree.isProcessTrusted());
}

}  // namespace
}  // namespace purlock::host_macos
