#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/accessibility/atspi_tree.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::tour {

/// Reads another process's windows as a screen reader does: what it gives is what that process shows, and
/// nothing else.
class PanelReader {
  public:
    explicit PanelReader(const std::string& sessionBus);

    /// Switches accessibility on for the session and waits until it is.
    bool enable();

    /// The texts of the process's windows from top to bottom; texts that stand in one row are one line. Empty
    /// while nothing has been read yet: ask again a little later.
    std::vector<std::string> lines(std::int32_t pid);

  private:
    host_linux::BusThread thread_;
    host_linux::AtSpiTree tree_;
};

}  // namespace purlock::tour
