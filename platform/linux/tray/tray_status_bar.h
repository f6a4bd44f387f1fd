#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/run_loop.h"
#include "platform/linux/dbus/bus_thread.h"
#include "platform/linux/panel/outside_clicks.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

/// Answers for as long as there is the item that gave it, and nothing after that.
struct IconWhereabouts {
    std::function<std::optional<Rect>()> frame;  // in the shell's coordinates
    std::function<IconAt(double x, double y)> iconAt;
};

/// The desktop's tray. The icon is a status notifier item if a tray shows those, else a window in the X
/// server's system tray. It moves each time one of them comes, goes or comes back.
///
/// If both are there, the notifier item wins. If neither is, the item waits for one; its frame is all zero
/// meanwhile. Owned by the host; ends after the items, before the bus thread. Main thread.
class TrayStatusBar final : public StatusBar {
  public:
    /// Brings the panel to the front if it is open; whether it is.
    using PresentPanel = std::function<bool()>;

    /// `busAddress` is that of the session bus.
    TrayStatusBar(RunLoop& mainLoop, BusThread& busThread, std::string busAddress, PresentPanel presentPanel)
        : mainLoop_(mainLoop),
          busThread_(busThread),
          busAddress_(std::move(busAddress)),
          presentPanel_(std::move(presentPanel)) {}

    /// Never null. Lengths other than a variable one are not known here.
    std::unique_ptr<StatusItem> statusItemWithLength(double length) override;

    /// Where the last item's icon is, in the shell's coordinates; absent, or empty, when it is nowhere.
    std::optional<Rect> iconFrame() const { return whereabouts_.frame ? whereabouts_.frame() : std::nullopt; }

    /// True if it is at a place, in pixels of the X screen with y downwards.
    IconAt iconAt(double x, double y) const {
        return whereabouts_.iconAt ? whereabouts_.iconAt(x, y) : IconAt::no;
    }

  private:
    RunLoop& mainLoop_;
    BusThread& busThread_;
    const std::string busAddress_;
    const PresentPanel presentPanel_;
    IconWhereabouts whereabouts_;
};

}  // namespace purlock::host_linux
