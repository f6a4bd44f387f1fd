#include "platform/linux/accessibility/kept_trees.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility/snapshot_element.h"
#include "source/accessibility_scraper.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;

constexpr std::int32_t pid = 7;

SnapshotNode node(const std::string& title, std::vector<std::uint32_t> children = {}) {
    return {std::nullopt, title, std::nullopt, std::move(children), "/" + title};
}

/// app(window(menu(entry) badge) other)
Snapshot tree(const std::string& badge) {
    return {{node("app", {1, 2}), node("window", {3, 4}), node("other"), node("menu", {5}), node(badge),
             node("entry")}};
}

/// The trees with a walk over them as the program does it, at a time that the test sets.
struct Walks {
    std::optional<std::string> walk() {
        const auto view = trees.answer(pid, now);
        lastSize = view.snapshot ? view.snapshot->nodes.size() : 0;
        SnapshotElement application(view.snapshot, 0, view.record);
        return AccessibilityScraper::walk(application, {"high"}, 0);
    }

    /// Answers what is due with that tree; how long after the start of the test it became due.
    std::chrono::milliseconds nextRead(std::optional<Snapshot> answer) {
        for (;; now += 100ms) {
            walk();
            const auto question = trees.due(pid, now);
            if (!question) continue;
            asked = question->found;
            trees.take(pid, std::move(answer), now);
            walk();
            return std::chrono::duration_cast<std::chrono::milliseconds>(now - KeptTrees::Moment{});
        }
    }

    KeptTrees trees{ReadingPace{}};
    KeptTrees::Moment now{};
    std::size_t lastSize = 0;
    std::optional<FoundElement> asked;
};

TEST(KeptTrees, AFoundElementIsKeptWithThoseAboveItAlone) {
    Walks walks;
    EXPECT_EQ(walks.walk(), std::nullopt);
    ASSERT_TRUE(walks.trees.due(pid, walks.now));
    walks.trees.take(pid, tree("Very High"), walks.now);
    EXPECT_EQ(walks.walk(), "Very High");
    EXPECT_EQ(walks.lastSize, 6U);
    EXPECT_EQ(walks.walk(), "Very High");
    EXPECT_EQ(walks.lastSize, 6U) << "a small tree may stay";
}

TEST(KeptTrees, ALargeTreeShrinksToWhatWasFound) {
    Snapshot large = tree("Very High");
    for (std::uint32_t i = 6; i < 1000; ++i) {
        large.nodes[2].children.push_back(i);
        large.nodes.push_back(node("x"));
    }
    Walks walks;
    walks.walk();
    walks.trees.due(pid, walks.now);
    walks.trees.take(pid, large, walks.now);
    EXPECT_EQ(walks.walk(), "Very High");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(walks.walk(), "Very High");
        EXPECT_EQ(walks.lastSize, 3U);
    }
}

TEST(KeptTrees, ATreeInWhichNothingIsFoundIsWalkedOnce) {
    Walks walks;
    walks.walk();
    walks.trees.due(pid, walks.now);
    walks.trees.take(pid, tree("low"), walks.now);
    EXPECT_EQ(walks.walk(), std::nullopt);
    EXPECT_EQ(walks.lastSize, 6U);
    EXPECT_EQ(walks.walk(), std::nullopt);
    EXPECT_EQ(walks.lastSize, 0U);
}

TEST(KeptTrees, ReadsAtOnceThenAFewTimesThenEvery15Seconds) {
    Walks walks;
    std::vector<std::chrono::milliseconds> reads;
    for (int i = 0; i < 5; ++i) reads.push_back(walks.nextRead(tree("High")));
    EXPECT_EQ(reads, (std::vector<std::chrono::milliseconds>{0ms, 1500ms, 5500ms, 20500ms, 35500ms}));
    EXPECT_EQ(walks.asked, (FoundElement{"/High", SnapshotText::title, "High"}));
}

TEST(KeptTrees, WhileNothingIsFoundTheReadsBecomeRarer) {
    Walks walks;
    std::vector<std::chrono::milliseconds> reads;
    for (int i = 0; i < 7; ++i) reads.push_back(walks.nextRead(tree("low")));
    EXPECT_EQ(reads, (std::vector<std::chrono::milliseconds>{0ms, 4000ms, 34000ms, 94000ms, 154000ms,
                                                             214000ms, 274000ms}));
    EXPECT_EQ(walks.asked, std::nullopt);
}

/// A change is read once the window has settled, and then not for half a minute.
TEST(KeptTrees, WhereNothingIsFoundAChangeIsReadOnce) {
    Walks walks;
    for (int i = 0; i < 5; ++i) walks.nextRead(tree("low"));
    const auto change = [&](std::chrono::milliseconds when) {
        walks.now = KeptTrees::Moment{} + when;
        walks.trees.noteChange(walks.now);
    };
    change(160s);
    EXPECT_EQ(walks.nextRead(tree("low")), 164s);
    EXPECT_EQ(walks.nextRead(tree("low")), 194s);
    change(200s);
    change(203s);
    EXPECT_EQ(walks.nextRead(tree("low")), 207s) << "after the last change";
    for (int i = 0; i < 30; ++i) change(300s + i * 1s);
    EXPECT_TRUE(walks.trees.due(pid, KeptTrees::Moment{} + 312s))
        << "changes without end are read now and then";
}

TEST(KeptTrees, AChangeBetweenAReadAndTheWalkOverItIsReadToo) {
    Walks walks;
    walks.nextRead(tree("low"));
    walks.now += 4s;
    ASSERT_TRUE(walks.trees.due(pid, walks.now));
    walks.trees.take(pid, tree("low"), walks.now);
    walks.trees.noteChange(walks.now);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(walks.walk(), std::nullopt);
    EXPECT_TRUE(walks.trees.due(pid, walks.now + 4s));
}

TEST(KeptTrees, ABadgeThatComesWithAChangeIsFoundAndFollowed) {
    Walks walks;
    for (int i = 0; i < 3; ++i) walks.nextRead(tree("low"));
    walks.trees.noteChange(walks.now);
    EXPECT_EQ(walks.nextRead(tree("High")), 38s);
    EXPECT_EQ(walks.walk(), "High");
    EXPECT_EQ(walks.nextRead(tree("High")), 42s);
    EXPECT_EQ(walks.nextRead(tree("High")), 57s);
}

TEST(KeptTrees, ABadgeThatGoesIsLookedForOnceMore) {
    Walks walks;
    for (int i = 0; i < 5; ++i) walks.nextRead(tree("High"));
    walks.trees.noteChange(walks.now);
    const auto start = walks.nextRead(tree("low"));
    EXPECT_EQ(walks.nextRead(tree("low")) - start, 4s);
    EXPECT_EQ(walks.nextRead(tree("low")) - start, 34s);
}

TEST(KeptTrees, AnElementThatIsAsItWasNeedsNoTree) {
    Walks walks;
    walks.nextRead(tree("High"));
    walks.now += 1500ms;
    walks.walk();
    const auto question = walks.trees.due(pid, walks.now);
    ASSERT_TRUE(question && question->found);
    walks.trees.confirm(pid, walks.now);
    EXPECT_EQ(walks.walk(), "High");
    EXPECT_FALSE(walks.trees.due(pid, walks.now + 3900ms));
    EXPECT_TRUE(walks.trees.due(pid, walks.now + 4000ms));
}

TEST(KeptTrees, AChangeIsReadAtOnceAlsoDuringARead) {
    Walks walks;
    for (int i = 0; i < 4; ++i) walks.nextRead(tree("High"));
    EXPECT_FALSE(walks.trees.due(pid, walks.now));
    walks.trees.noteChange(walks.now);
    ASSERT_TRUE(walks.trees.due(pid, walks.now));
    walks.trees.noteChange(walks.now);
    EXPECT_FALSE(walks.trees.due(pid, walks.now)) << "one read at a time";
    walks.trees.take(pid, tree("High"), walks.now);
    EXPECT_TRUE(walks.trees.due(pid, walks.now));
}

TEST(KeptTrees, WindowsThatComeAndGoCountNowAndThen) {
    Walks walks;
    walks.now += 1h;
    for (int i = 0; i < 4; ++i) walks.nextRead(tree("High"));
    int reads = 0;
    for (int i = 0; i < 100; ++i) {
        walks.now += 100ms;
        walks.trees.noteWindow(pid, walks.now);
        if (!walks.trees.due(pid, walks.now)) continue;
        ++reads;
        walks.trees.confirm(pid, walks.now);
    }
    EXPECT_LE(reads, 6);  // two windows in ten seconds, each with its two reads that follow
    EXPECT_GE(reads, 2);
}

TEST(KeptTrees, AnApplicationThatFailsGivesNothingAndIsTriedEverMoreRarely) {
    Walks walks;
    walks.nextRead(tree("High"));
    EXPECT_EQ(walks.walk(), "High");
    std::vector<std::chrono::milliseconds> reads;
    for (int i = 0; i < 6; ++i) {
        reads.push_back(walks.nextRead(std::nullopt));
        EXPECT_EQ(walks.walk(), std::nullopt);
    }
    EXPECT_EQ(reads,
              (std::vector<std::chrono::milliseconds>{1500ms, 2500ms, 4500ms, 8500ms, 16500ms, 31500ms}));
}

TEST(KeptTrees, WhatNobodyAsksForIsForgotten) {
    Walks walks;
    walks.nextRead(tree("High"));
    EXPECT_TRUE(walks.trees.sweep(walks.now + 80s));
    EXPECT_FALSE(walks.trees.sweep(walks.now + 91s));
    EXPECT_EQ(walks.walk(), std::nullopt);
}

}  // namespace
}  // namespace purlock::host_linux
