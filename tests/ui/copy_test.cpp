#include <gtest/gtest.h>

#include "tests/support/view_reading.h"
#include "tests/ui/shell_fixture.h"
#include "ui/signal_path_panel.h"

namespace purlock {
namespace {

using test::ShellFixture;

std::vector<const View*> buttonsOf(const View& view) {
    return test::elementsOf<Button>(view);
}

TEST(CopyButton, StandsUnderAFixWithACommandWhereThereIsAClipboard) {
    Diagnostic finding;
    finding.fix = "Run true.";
    const View without = DiagnosticRow{finding, true}.body();
    EXPECT_TRUE(buttonsOf(without).empty()) << "there is no command";
    finding.command = "true";
    const View unable = DiagnosticRow{finding}.body();
    EXPECT_TRUE(buttonsOf(unable).empty()) << "there is no clipboard";

    const View row = DiagnosticRow{finding, true}.body();
    const auto buttons = buttonsOf(row);
    ASSERT_EQ(buttons.size(), 1U);
    EXPECT_EQ(test::contentOf<Button>(*buttons[0]).action, Action(Copy{"true"}));
    EXPECT_EQ(test::textsOf(*buttons[0]), std::vector<std::string>{"Copy"});
    EXPECT_EQ(buttons[0]->help, "Copy: true");
    EXPECT_EQ(buttons[0]->label, "true") << "for a screen reader, which one of several it is";
}

TEST(CopyButton, PutsTheCommandOnTheClipboardAndDoesNothingElse) {
    ShellFixture f({.hasClipboard = true});
    f.launch();
    f.pass(std::chrono::milliseconds(200));
    f.desktop.takeHistory();
    const auto files = f.files.files;
    f.desktop.use(Copy{"pw-metadata"});
    EXPECT_EQ(f.desktop.copied, std::vector<std::string>{"pw-metadata"});
    EXPECT_TRUE(f.desktop.takeHistory().empty());
    EXPECT_EQ(f.files.files, files);
}

TEST(CopyButton, DoesNothingWithoutAClipboard) {
    ShellFixture f;
    f.launch();
    f.desktop.use(Copy{"pw-metadata"});
    EXPECT_TRUE(f.desktop.copied.empty());
}

}  // namespace
}  // namespace purlock
