#pragma once

#include "ui/window_seams.h"

namespace purlock::host_macos {

/// The menu bar's right side. Main thread only.
class SystemStatusBar final : public StatusBar {
  public:
    std::unique_ptr<StatusItem> statusItemWithLength(double length) override;
};

}  // namespace purlock::host_macos
