#pragma once

#include <functional>
#include <string>

#include "platform/linux/dbus/bus_service.h"

namespace purlock::host_linux {

/// The user's choice for the whole desktop.
enum class ColorScheme { unknown, dark, light };

/// Follows the desktop's colour scheme, as the settings portal tells it (org.freedesktop.appearance); without
/// starting the portal. Made when the connection is there and dropped when it is lost; on the bus thread.
class ColorSchemeWatch {
  public:
    using Callback = std::function<void(ColorScheme)>;

    /// `onScheme` runs at each change from unknown on.
    ColorSchemeWatch(BusConnection& connection, Callback onScheme);
    ColorSchemeWatch(const ColorSchemeWatch&) = delete;
    ColorSchemeWatch& operator=(const ColorSchemeWatch&) = delete;

  private:
    void portalChanged(const std::string& owner);
    void ask();
    void take(const BusValue& value);

    const Callback onScheme_;
    ColorScheme scheme_ = ColorScheme::unknown;
    BusService portal_;
};

}  // namespace purlock::host_linux
