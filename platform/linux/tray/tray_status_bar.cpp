#include "platform/linux/tray/tray_status_bar.h"

#include "platform/linux/tray/tray_status_item.h"

namespace purlock::host_linux {

std::unique_ptr<StatusItem> TrayStatusBar::statusItemWithLength(double /*length*/) {
    auto item = std::make_unique<TrayStatusItem>(mainLoop_, busThread_, busAddress_, presentPanel_);
    whereabouts_ = item->whereabouts();
    return item;
}

}  // namespace purlock::host_linux
