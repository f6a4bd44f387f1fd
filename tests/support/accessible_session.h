#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/private_bus.h"
#include "tests/support/virtual_display.h"

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
        if (!display_) display_.emplace();
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
        if (display_) variables.push_back("DISPLAY=" + display_->name());
        return variables;
    }

  private:
    static constexpr auto ownGroup = ChildOptions::Group::own;

    PrivateBus bus_;
    std::optional<VirtualDisplay> display_;
    ChildProcess launcher_;
};

}  // namespace purlock::test
