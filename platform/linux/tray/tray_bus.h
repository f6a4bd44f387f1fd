#pragma once

#include <optional>
#include <string>

#include "platform/linux/dbus/bus_thread.h"
#include "platform/linux/tray/color_scheme_watch.h"
#include "platform/linux/tray/notifier_item.h"

namespace purlock::host_linux {

struct TrayBusEvents {
    NotifierEvents item;  // a bus that goes, or is not there at first, is no host
    ColorSchemeWatch::Callback onScheme;
};

/// All that the tray icon has to do with the session bus, whether the bus is there or not. Lives on the bus
/// thread; events come there.
class TrayBus {
  public:
    TrayBus(BusThread& thread, std::string address, TrayBusEvents events);
    TrayBus(const TrayBus&) = delete;
    TrayBus& operator=(const TrayBus&) = delete;

    void setLook(NotifierLook look);

  private:
    void connected();
    void lost();

    const TrayBusEvents events_;
    NotifierLook look_;
    BusConnection connection_;
    std::optional<NotifierItem> item_;
    std::optional<ColorSchemeWatch> scheme_;
};

}  // namespace purlock::host_linux
