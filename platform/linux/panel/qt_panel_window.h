#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "ui/window_seams.h"

namespace purlock::host_linux {

struct OpenPanel;

/// Makes the panel's window with Qt Widgets: without a frame, above other windows, always dark.
///
/// The widgets are made when the panel is first shown, so that a program whose panel nobody opens stays
/// small; soon after the start and after each time that the panel was hidden, the program gives back what it
/// does not need while hidden. The window does not hide when the program loses the focus, which on many
/// desktops follows the pointer. Owned by the host, which outlives what it makes; main
/// thread only.
class QtPanelWindows final : public PanelWindows {
  public:
    using IconFrame = std::function<std::optional<Rect>()>;

    /// `iconFrame` tells where the status item's icon is: the panel opens above it where there is no room
    /// below, and never leaves the screen.
    explicit QtPanelWindows(IconFrame iconFrame) : iconFrame_(std::move(iconFrame)) {}

    std::unique_ptr<PanelWindow> makePanel(const PanelStyle& style, PanelWindowEvents events) override;

    /// Brings the panel to the front, with the focus, if it is open. Whether it is.
    bool bringToFront();

    bool isPanelOpen() const;

  private:
    const IconFrame iconFrame_;
    std::shared_ptr<OpenPanel> openPanel_;  // the last one that was made
};

}  // namespace purlock::host_linux
