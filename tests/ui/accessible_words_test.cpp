#include "ui/accessible_words.h"

#include <gtest/gtest.h>

#include <utility>

#include "ui/view_parts.h"

namespace purlock {
namespace {

const View say = line("say", {12}, white());
const View ornament = symbol("pin", {12}, white());
const Content button = Button{Quit{}};
const Content toggle = Switch{true, ToggleLogEnabled{}};
const Content menu = Menu{{MenuItem{"not these", PinDevice{}}}};

struct Case {
    const char* name;
    View view;
    const char* label;
    const char* help;
    AccessibleWords expected;
};

View aLabelled(View view, const char* label) {
    view.label = label;
    return view;
}

TEST(AccessibleWords, Table) {
    const Case cases[] = {
        {"a text", say, "", "", {"say", ""}},
        {"a text that a reader might spell",
         line("FINDINGS", {10}, white()),
         "Findings",
         "",
         {"Findings", ""}},
        {"a text's help is for the pointer", say, "", "help", {"say", ""}},
        {"an ornament", ornament, "", "", {"", ""}},
        {"a symbol with words", ornament, "Playing", "", {"Playing", ""}},
        {"a circle with help", disc(6, white()), "", "help", {"help", ""}},
        {"a circle with both", disc(6, white()), "High severity", "help", {"High severity", ""}},
        {"a bar", element(Bar{}), "", "", {"", ""}},
        {"a button", container(button, {say}), "", "", {"say", ""}},
        {"a button with help too", container(button, {say}), "", "help", {"say", ""}},
        {"a button of help alone", container(button, {ornament}), "", "help", {"help", ""}},
        {"a button that needs a description", container(button, {say}), "which", "help", {"say", "which"}},
        {"a button with a label alone", container(button, {ornament}), "which", "", {"", "which"}},
        {"a button without a face", container(button, {}), "", "help", {"help", ""}},
        {"all on it, in order",
         container(button, {row(0, {ornament, column(0, {say, line("more", {10}, white())}), say})}),
         "",
         "",
         {"say, more, say", ""}},
        {"what is on it by its own name",
         container(button, {row(0, {aLabelled(ornament, "Pin"), aLabelled(say, "Say")})}),
         "",
         "",
         {"Pin, Say", ""}},
        {"an empty text on it", container(button, {line("", {12}, white()), say}), "", "", {"say", ""}},
        {"a switch", container(toggle, {say}), "", "", {"say", ""}},
        {"a menu says what is chosen", container(menu, {say}), "Output device", "", {"say", "Output device"}},
    };
    for (Case row : cases) {
        SCOPED_TRACE(row.name);
        row.view.label = row.label;
        row.view.help = row.help;
        EXPECT_EQ(accessibleWords(row.view), row.expected);
    }
}

}  // namespace
}  // namespace purlock
