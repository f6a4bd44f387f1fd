#pragma once

#include <optional>
#include <string>

#include "tests/host-linux/session/accessible_reader.h"
#include "tests/host-linux/session/x_screen.h"
#include "tests/support/private_session.h"
#include "tests/support/virtual_display.h"

namespace purlock::test {

/// A whole desktop of real parts, with the program in it: buses, accessibility, sound, an X server, a window
/// manager, a panel with a tray, a player that plays a file with tags; and what a person does there with a
/// mouse and a keyboard. Two devices: "desk" (48 kHz, 32 bits), the default, and "hall" (44.1 kHz, 16 bits).
///
/// Points the process's environment into it; one at a time. The test's own thread.
class DesktopSession {
  public:
    /// Most people's desktops speak to no screen reader, and programs are lighter there.
    enum class Accessibility { on, off, later };  // later: the service is there, switched off

    /// Starts all but a tray, the player and the program; false when something does not answer.
    bool start(Accessibility accessibility = Accessibility::on);

    /// The daemons by name, the sound, the logs.
    PrivateSession& parts() { return parts_; }

    /// From now on the focus follows the pointer, without a click.
    bool letFocusFollowPointer();
    void killWindowManager() { parts_.process("openbox").kill(); }
    bool switchToWorkspace(int number);  // from 0

    bool startTray();  // tint2, at the top of the screen
    void killTray() { parts_.process("tint2").kill(); }

    ChildProcess& startProgram();
    ChildProcess& program() { return parts_.process("purlock"); }

    /// A player whose tags say "Spring", by "The Larks", on "Seasons"; it plays until it is killed. Told to
    /// pause and to go on by `playerctl`.
    bool startPlayer(int rate);
    bool playerctl(const std::string& command);

    // The hand on the mouse and the keyboard; false when it could not be moved.

    bool click(const ScreenArea& area, const std::string& button = "1");
    bool pointAt(const ScreenArea& area);
    bool press(const std::string& key);

    /// Clicks the icon where it stands in the tray, once it is there and stands still.
    bool clickIcon(const std::string& button = "1");

    // The eyes

    /// What the program shows on the screen as a screen reader meets it; empty while there is nothing.
    Accessible onScreen();

    AccessibleReader& reader() { return reader_; }
    bool switchAccessibilityOn();

  private:
    bool startDevices();
    bool startScreen();
    void startAccessibilityService();

    PrivateSession parts_;
    std::optional<VirtualDisplay> display_;
    ChildProcess accessibility_;
    AccessibleReader reader_;
};

}  // namespace purlock::test
