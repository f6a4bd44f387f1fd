#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/run_loop.h"
#include "platform/linux/dbus/bus_thread.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

/// The desktop's tray: a status notifier item where somebody shows those, else a window in the X server's
/// system tray, and each time the one or the other comes, goes or comes back, the icon moves there.
///
/// Where both are, the notifier item wins. Where neither is, the item waits for one; its frame is all zero
/// meanwhile. Owned by the host; ends after the items, before the bus thread. Main thread.
class TrayStatusBar final : public StatusBar {
  public:
    /// `busAddress` is that of the session bus.
    TrayStatusBar(RunLoop& mainLoop, BusThread& busThread, std::string busAddress)
        : mainLoop_(mainLoop), busThread_(busThread), busAddress_(std::move(busAddress)) {}

    /// Never null. Lengths other than a variable one are not known here.
    std::unique_ptr<StatusItem> statusItemWithLength(double length) override;

    /// Where the last item's icon is, in the shell's coordinates; absent, or empty, when it is nowhere.
    std::optional<Rect> iconFrame() const { return whereabouts_ ? whereabouts_() : std::nullopt; }

  private:
    RunLoop& mainLoop_;
    BusThread& busThread_;
    const std::string busAddress_;
    std::function<std::optional<Rect>()> whereabouts_;
};

}  // namespace purlock::host_linux
