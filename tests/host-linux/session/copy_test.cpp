#include "tests/host-linux/session/session_test.h"

namespace purlock::test {
namespace {

const std::string command = "pw-metadata -n settings 0 clock.allowed-rates '[ 44100 48000 ]'";

/// A device of 44.1 kHz plays a track of its own rate, but PipeWire may not leave 48 kHz.
class CopyButton : public SessionTest {
  protected:
    void openPanelWithFinding() {
        ASSERT_TRUE(desktop.startPlayer(44100));
        startInTray();
        ASSERT_TRUE(desktop.parts().setDefaultSink("hall"));
        ASSERT_TRUE(deviceBecomes("hall"));
        ASSERT_TRUE(program.awaitVerdict("resampling"));
        ASSERT_NO_FATAL_FAILURE(openPanel());
        ASSERT_TRUE(shows("PipeWire is resampling"));
        ASSERT_TRUE(shows("Copy"));
    }

    /// What another program is given that pastes.
    std::string pasted() {
        desktop.parts().spawn("paster", {"zenity", "--entry", "--text=Paste here"});
        if (!waitUntil([] { return isOnScreen("zenity"); })) return "no window";
        const std::string file = desktop.parts().folder() + "/log-paster";
        waitUntil([&] {
            desktop.press("ctrl+v");
            desktop.press("Return");
            return contentsOf(file).find('\n') != std::string::npos;
        });
        return contentsOf(file);
    }
};

TEST_F(CopyButton, GivesTheCommandToAnotherProgramAtAClick) {
    ASSERT_NO_FATAL_FAILURE(openPanelWithFinding());
    ASSERT_TRUE(clickOn("Copy", "push button"));
    EXPECT_NE(pasted().find(command), std::string::npos) << pasted();
}

TEST_F(CopyButton, IsTheSecondControlForTheKeyboard) {
    ASSERT_NO_FATAL_FAILURE(openPanelWithFinding());
    for (const char* const key : {"Tab", "Tab", "space"}) ASSERT_TRUE(desktop.press(key));
    EXPECT_NE(pasted().find(command), std::string::npos) << pasted();
}

TEST_F(CopyButton, NoWordOfAnotherSystemIsOnTheScreen) {
    ASSERT_NO_FATAL_FAILURE(openPanelWithFinding());
    for (const std::string& text : texts()) {
        for (const char* const word : {"macOS", "CoreAudio", "Audio MIDI", "MacBook", "AirPods"}) {
            EXPECT_EQ(text.find(word), std::string::npos) << text;
        }
    }
}

}  // namespace
}  // namespace purlock::test
