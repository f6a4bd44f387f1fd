#pragma once

#include <functional>
#include <utility>

#include "base/run_loop.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

/// True if the status item's icon is at a place.
enum class IconAt { no, maybe, yes };

/// Clicks that go to other programs.
///
/// On X every press of a button is seen, also one that goes to another program. A press in the program's own
/// windows does not count. Neither does a press that closes a menu of the program, nor one on its icon: the
/// tray tells of that one. Where the tray does not say where the icon is, a press that may be on it is told a
/// moment after the button was let go, and not at all if the token is dropped by then.
///
/// On Wayland no program sees the clicks of others, and XWayland hides some clicks from X programs. There the
/// focus that goes elsewhere stands for a click: `FocusGone` says when it counts.
///
/// Owned by the host, which outlives the tokens; main thread only.
class OutsideClicks final : public EventMonitor {
  public:
    using IconQuestion = std::function<IconAt(double x, double y)>;  // pixels of the X screen, y downwards

    OutsideClicks(RunLoop& mainLoop, IconQuestion iconAt) : mainLoop_(mainLoop), iconAt_(std::move(iconAt)) {}

    Cancellable addGlobalMonitor(Mask mask, std::function<void()> handler) override;

  private:
    RunLoop& mainLoop_;
    const IconQuestion iconAt_;
};

}  // namespace purlock::host_linux
