#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/host-linux/session/accessible_reader.h"

namespace purlock::tour {

/// Reads another process's windows as a screen reader does: what it gives is what that process shows, and
/// nothing else.
class PanelReader {
  public:
    /// Switches accessibility on for the session and waits until it is.
    bool enable();

    /// The texts of the process's windows from top to bottom; texts that stand in one row are one line. Empty
    /// while the process shows nothing.
    std::vector<std::string> lines(std::int32_t pid);

  private:
    test::AccessibleReader reader_;
};

}  // namespace purlock::tour
