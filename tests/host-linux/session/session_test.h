#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/host-linux/program/program_under_test.h"
#include "tests/host-linux/session/desktop_session.h"

namespace purlock::test {

/// A test with a whole desktop. Whatever it does, the program never prints anything.
class SessionTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(desktop.start()) << desktop.parts().logs(); }

    void TearDown() override {
        EXPECT_EQ(program.console(), "");
        EXPECT_EQ(program.faults(), "");
        if (!HasFailure()) return;
        std::cerr << "state.json: " << program.snapshot() << "\non the screen:\n";
        for (const std::string& text : texts()) std::cerr << text << "\n";
        std::cerr << desktop.parts().logs();
    }

    void startInTray() {
        ASSERT_TRUE(desktop.startTray());
        desktop.startProgram();
    }

    /// Opens the panel by its icon.
    void openPanel() {
        ASSERT_TRUE(desktop.clickIcon()) << "there is no icon";
        ASSERT_TRUE(panelComes());
    }

    static bool panelComes() {
        return waitUntil([] { return panelOnScreen().has_value(); });
    }
    static bool panelGoes() {
        return waitUntil([] { return !panelOnScreen().has_value(); });
    }

    /// The texts of the panel, without that of the pulse, which tells the time.
    std::vector<std::string> texts() {
        std::vector<std::string> all = textsOf(desktop.onScreen());
        std::erase_if(all, [](const std::string& text) { return text.empty() || text.starts_with("Live"); });
        return all;
    }

    bool shows(const std::string& text) {
        return waitUntil([&] { return elementNamed(desktop.onScreen(), text) != nullptr; });
    }

    /// Clicks an element of the panel, scrolled to if need be, once it stands still: a new report may move
    /// it.
    bool clickOn(const std::string& name, const std::string& role) {
        AtRest rest;
        return waitUntil([&] {
            const Accessible screen = desktop.onScreen();
            const Accessible* element = elementNamed(screen, name, role);
            const auto panel = panelOnScreen();
            if (element == nullptr || !panel || !rest.sees(element->area)) return false;
            if (panel->contains(element->area)) return desktop.click(element->area);
            const bool below = element->area.y > panel->centerY();
            desktop.click(*panel, below ? "5" : "4");  // a turn of the wheel
            return false;
        });
    }

    /// The device menu's first entry is the system's default, its last one the device that came last. The
    /// toolkit tells screen readers of an entry once the pointer or the keyboard is on it, not before.
    enum class Entry { first, last };
    bool choose(Entry entry, const std::string& shownNow) {
        std::optional<ScreenArea> menu;
        const bool opens = clickOn(shownNow, "button menu") &&
                           waitUntil([&] { return (menu = menuOnScreen()).has_value(); });
        if (!opens) return false;
        constexpr int halfARow = 10;
        const int y = entry == Entry::first ? menu->y + halfARow : menu->y + menu->height - halfARow;
        return desktop.click({menu->centerX(), y, 0, 0}) && waitUntil([] { return !menuOnScreen(); });
    }

    /// A value of defaults.json; null while it has none.
    nlohmann::json setting(const std::string& key) {
        const std::string file = desktop.parts().folder() + "/config/Purlock/defaults.json";
        const auto settings = nlohmann::json::parse(contentsOf(file), nullptr, /*allow_exceptions=*/false);
        return settings.is_object() ? settings.value(key, nlohmann::json()) : nlohmann::json();
    }
    bool settingBecomes(const std::string& key, const nlohmann::json& value) {
        return waitUntil([&] { return setting(key) == value; });
    }

    bool deviceBecomes(const std::string& uid) {
        return waitUntil([&] { return signatureOf(program.snapshot()).starts_with(uid + "|"); });
    }

    DesktopSession desktop;
    ProgramUnderTest program{desktop.parts()};
};

}  // namespace purlock::test
