#include <gtest/gtest.h>
#include <malloc.h>

#include <QApplication>
#include <cstddef>
#include <cstdlib>
#include <string>

#include "platform/linux/panel/panel_surface.h"
#include "tests/support/panel_states.h"
#include "ui/view_parts.h"

// An hour of use in a few seconds: reports, tracks with hostile texts, and openings of the panel. Memory must
// stay flat. PURLOCK_PANEL_REPORTS sets how many reports there are (10,000 are an hour and a half).

namespace purlock {
namespace {

int reports() {
    const char* wanted = std::getenv("PURLOCK_PANEL_REPORTS");
    return wanted ? std::atoi(wanted) : 600;
}

std::size_t allocatedBytes() {
    return mallinfo2().uordblks;
}

/// Texts that somebody may well send.
std::string hostileText(int i) {
    static const std::string texts[] = {
        std::string(20'000, 'x'),
        "<img src='file:///etc/passwd'><b>" + std::to_string(i),
        "\xFF\xFE broken \xC3 bytes",
        "\xE2\x80\xAE right to left \xE2\x80\xA6 \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D",
        std::string("a\0b", 3),
        "&amp;&&&\n\n\r\t",
        "",
        "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7 "
        "\xCC\x81\xCC\x81\xCC\x81\xCC\x81",
    };
    return texts[static_cast<std::size_t>(i) % std::size(texts)] + std::to_string(i);
}

void putTexts(View& view, int i) {
    if (auto* text = std::get_if<Text>(&view.content)) text->text = hostileText(i);
    if (auto* menu = std::get_if<Menu>(&view.content)) {
        menu->entries.push_back(MenuItem{hostileText(i), PinDevice{hostileText(i)}});
    }
    for (View& child : view.children) putTexts(child, ++i);
}

TEST(PanelEndurance, MemoryStaysFlat) {
    const auto states = test::panelStates();
    host_linux::PanelSurface surface({[](const Action&) {}, [] {}});
    surface.setFixedSize(360, 600);
    const int count = reports();
    std::size_t halfway = 0;
    for (int i = 0; i < count; ++i) {
        if (i == count / 2) halfway = allocatedBytes();
        View view = states[static_cast<std::size_t>(i) % states.size()].view;
        if (i % 3 == 0) putTexts(view, i);
        surface.setContent(view);
        if (i % 10 == 0) surface.setVisible(!surface.isVisible());
        QApplication::processEvents();
    }
    const auto grown = static_cast<std::ptrdiff_t>(allocatedBytes() - halfway);
    RecordProperty("bytes", static_cast<int>(grown));
    EXPECT_LT(grown, 512 * 1024) << "in " << count / 2 << " reports";
}

}  // namespace
}  // namespace purlock
