#pragma once

#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/host-linux/session/x_screen.h"

namespace purlock::test {

/// An element of a window as a screen reader meets it.
struct Accessible {
    std::string role;  // "label", "push button", "check box"
    std::string name;
    std::string description;
    bool isShowing = false;
    bool isChecked = false;
    ScreenArea area;   // on the screen
    std::string path;  // among the objects of its program
    std::vector<Accessible> children;
};

/// Reads another program's windows over AT-SPI, the way of screen readers: a second look at what the program
/// shows. Each call waits for the answers. The test's own thread.
class AccessibleReader {
  public:
    /// Meets the accessibility bus of the session at $DBUS_SESSION_BUS_ADDRESS and switches accessibility on
    /// there; false while the service does not answer.
    bool connect();

    /// Everything of the program that is on the screen; absent when it says nothing.
    std::optional<Accessible> read(pid_t pid);

    /// The name of one element that `read` has found: a quick look.
    std::string nameOf(pid_t pid, const std::string& path);

    /// Asks an element that the last `read` has found to do something; whether it says that it has.
    bool perform(const Accessible& element, const std::string& action);

  private:
    struct Closing {
        void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
    };
    using Bus = std::unique_ptr<sd_bus, Closing>;

    std::string applicationOf(pid_t pid);
    Accessible element(const std::string& application, const std::string& path, int depth);

    Bus bus_;
    pid_t pid_ = -1;
    std::string application_;  // of pid_
};

/// The names of all labels under an element, in reading order.
std::vector<std::string> textsOf(const Accessible& element);

/// The first element in reading order with this name, of this role if one is given; null when there is none.
const Accessible* elementNamed(const Accessible& element, const std::string& name,
                               const std::string& role = "");

}  // namespace purlock::test
