#include "platform/linux/tray/tray_status_bar.h"

#include "platform/linux/tray/tray_status_item.h"

namespace purlock::host_linux {

std::unique_ptr<StatusItem> TrayStatusBar::statusItemWithLength(double /*length*/) {
    return std::make_unique<TrayStatusItem>(mainLoop_, busThread_, busAddress_);
}

}  // namespace purlock::host_linux
