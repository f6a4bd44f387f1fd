#include "platform/linux/accessibility/atspi_tree.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility/application_reader.h"
#include "source/accessibility_scraper.h"
#include "tests/host-linux/accessibility/fast_pace.h"
#include "tests/support/accessible_session.h"

namespace purlock::host_linux {
namespace {

using test::AccessibleSession;
using test::ChildProcess;
using test::waitUntil;
using namespace std::chrono_literals;

class AtSpiTreeTest : public ::testing::Test {
  protected:
    std::optional<std::string> badge(std::int32_t pid) {
        return AccessibilityScraper::walk(*tree_.createApplication(pid), {"hi-res"}, 0);
    }

    bool becomesTrusted() {
        tree_.enable();
        return waitUntil([&] { return tree_.isProcessTrusted(); });
    }

    /// Walks again and again, as the program does, until the badge is that.
    bool showsBadge(std::int32_t pid, const std::optional<std::string>& expected,
                    std::chrono::milliseconds limit = 20s) {
        return waitUntil([&] { return badge(pid) == expected; }, limit);
    }

    AccessibleSession session_;
    BusThread thread_;
    AtSpiTree tree_{thread_, session_.bus().address(), {}, test::fastPace};
};

TEST_F(AtSpiTreeTest, TrustIsWhetherAccessibilityIsEnabled) {
    EXPECT_FALSE(waitUntil([&] { return tree_.isProcessTrusted(); }, 300ms));
    EXPECT_TRUE(becomesTrusted());
}

TEST_F(AtSpiTreeTest, ABadgeInAGtkWindowIsFoundAndGoesWithIt) {
    ASSERT_TRUE(becomesTrusted());
    ChildProcess window =
        session_.startProgram({"zenity", "--info", "--title=Player", "--text=  HI-RES LOSSLESS \n"});
    EXPECT_TRUE(showsBadge(window.pid(), "HI-RES LOSSLESS"));
    EXPECT_EQ(badge(getpid()), std::nullopt);
    window.kill();
    EXPECT_TRUE(showsBadge(window.pid(), std::nullopt, 5s));
}

TEST_F(AtSpiTreeTest, ABadgeInAQtWindowIsFoundAndGoesWithIt) {
    ASSERT_TRUE(becomesTrusted());
    ChildProcess window = session_.startProgram({PURLOCK_BADGE_WINDOW, "  Hi-Res Lossless\n"});
    EXPECT_TRUE(showsBadge(window.pid(), "Hi-Res Lossless"));
    const std::int32_t pid = window.pid();
    window.kill();
    EXPECT_TRUE(showsBadge(pid, std::nullopt, 5s));
}

/// Its menu is closed: the entries are in the tree, and not on the screen.
TEST_F(AtSpiTreeTest, OfAGtkComboBoxTheChoiceAloneCounts) {
    ASSERT_TRUE(becomesTrusted());
    const auto start = [&](const char* chosen) {
        return session_.startProgram(
            {"/usr/bin/python3", PURLOCK_COMBO_WINDOW, chosen, "Hi-Res?", "Normal", "Hi-Res Lossless"});
    };
    ChildProcess chosen = start("2");
    EXPECT_TRUE(showsBadge(chosen.pid(), "Hi-Res Lossless"));
    ChildProcess normal = start("1");
    std::optional<std::string> name;
    EXPECT_TRUE(waitUntil([&] {
        name = AccessibilityScraper::walk(*tree_.createApplication(normal.pid()), {"normal"}, 0);
        return name.has_value();
    }));
    EXPECT_EQ(name, "Normal");
    EXPECT_FALSE(waitUntil([&] { return badge(normal.pid()).has_value(); }, 500ms));
}

TEST_F(AtSpiTreeTest, AHungApplicationLosesItsBadgeWithinTheBound) {
    ASSERT_TRUE(becomesTrusted());
    ChildProcess window = session_.startProgram({"zenity", "--info", "--text=HI-RES LOSSLESS"});
    ASSERT_TRUE(showsBadge(window.pid(), "HI-RES LOSSLESS"));
    window.pause();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(showsBadge(window.pid(), std::nullopt));
    // The element is asked, then the tree, each for as long as it may take.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1500ms + ApplicationReader::timeLimit + 1s);
    window.resume();
    EXPECT_TRUE(showsBadge(window.pid(), "HI-RES LOSSLESS"));
}

TEST_F(AtSpiTreeTest, TheAccessibilityBusMayDieAndReturn) {
    ASSERT_TRUE(becomesTrusted());
    session_.killAccessibility();
    ASSERT_TRUE(waitUntil([&] { return !tree_.isProcessTrusted(); }, 2s));
    EXPECT_EQ(badge(getpid()), std::nullopt);
    session_.startAccessibility();
    ASSERT_TRUE(becomesTrusted());
    ChildProcess window = session_.startProgram({"zenity", "--info", "--text=HI-RES LOSSLESS"});
    EXPECT_TRUE(showsBadge(window.pid(), "HI-RES LOSSLESS"));
}

TEST_F(AtSpiTreeTest, TheSessionBusMayDieAndReturn) {
    ASSERT_TRUE(becomesTrusted());
    session_.bus().kill();
    ASSERT_TRUE(waitUntil([&] { return !tree_.isProcessTrusted(); }, 2s));
    session_.killAccessibility();
    ASSERT_TRUE(session_.bus().start());
    session_.startAccessibility();
    EXPECT_TRUE(waitUntil([&] {
        tree_.enable();
        return tree_.isProcessTrusted();
    }));
}

}  // namespace
}  // namespace purlock::host_linux
