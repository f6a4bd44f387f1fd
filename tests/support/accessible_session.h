#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "tests/support/private_bus.h"

namespace purlock::test {

/// A desktop session of the test's own: a session bus, the accessibility bus on it and an X server, each with
/// the folders of the test alone.
class AccessibleSession {
  public:
    AccessibleSession() { startAccessibility(); }

    PrivateBus& bus() { return bus_; }

    /// The service that starts the accessibility bus, with that bus and its registry.
    void startAccessibility() {
        launcher_ = ChildProcess({"/usr/libexec/at-spi-bus-launcher"}, environment(), {.group = ownGroup});
    }
    void killAccessibility() { launcher_.kill(); }

    /// Starts a graphical program; the X server is started with the first.
    ChildProcess startProgram(const std::vector<std::string>& arguments) {
        if (display_.empty()) startDisplay();
        return ChildProcess(arguments, environment(), {.group = ownGroup});
    }

    std::vector<std::string> environment() const {
        const std::string folder = bus_.folder().path().string();
        std::vector<std::string> variables{"PATH=/usr/bin:/bin",
                                           "LANG=C.UTF-8",
                                           "HOME=" + folder,
                                           "XDG_RUNTIME_DIR=" + folder,
                                           "XDG_CONFIG_HOME=" + folder,
                                           "XDG_CACHE_HOME=" + folder,
                                           "GSETTINGS_BACKEND=memory",
                                           "GDK_BACKEND=x11",
                                           "QT_QPA_PLATFORM=xcb",
                                           "DBUS_SESSION_BUS_ADDRESS=" + bus_.address()};
        if (!display_.empty()) variables.push_back("DISPLAY=" + display_);
        return variables;
    }

  private:
    static constexpr auto ownGroup = ChildOptions::Group::own;

    /// The server picks a free number itself and tells it when it is ready.
    void startDisplay() {
        std::array<int, 2> ends{-1, -1};
        if (pipe(ends.data()) != 0) return;
        fcntl(ends[0], F_SETFD, FD_CLOEXEC);
        server_ = ChildProcess({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", "800x600x24",
                                "-nolisten", "tcp", "-noreset"},
                               {"PATH=/usr/bin:/bin"}, {.group = ownGroup, .keptDescriptor = ends[1]});
        close(ends[1]);
        char digit = 0;
        std::string number;
        while (read(ends[0], &digit, 1) == 1 && digit != '\n') number += digit;
        close(ends[0]);
        display_ = ":" + number;
    }

    PrivateBus bus_;
    std::string display_;
    ChildProcess server_;
    ChildProcess launcher_;
};

}  // namespace purlock::test
