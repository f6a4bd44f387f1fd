#pragma once

#include "ui/window_seams.h"

namespace purlock::host_macos {

/// The panel under the status item. Main thread only.
class PanelWindowsOfAppKit final : public PanelWindows {
  public:
    std::unique_ptr<PanelWindow> makePanel(const PanelStyle& style, PanelWindowEvents events) override;
};

}  // namespace purlock::host_macos
