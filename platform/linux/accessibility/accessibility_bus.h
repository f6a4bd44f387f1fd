#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_service.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::host_linux {

/// Keeps the connection to the accessibility bus, whose address the session bus knows (org.a11y.Bus), and
/// follows whether accessibility is enabled (org.a11y.Status). On the bus thread; owned by `AtSpiTree`'s
/// worker.
///
/// Both buses and the service between them may go and come back; no service is started unless `enable` is
/// called.
class AccessibilityBus {
  public:
    /// Called when the bus became usable (there, and enabled), and when it ceased to be.
    using ChangeCallback = std::function<void(bool usable)>;

    AccessibilityBus(BusThread& thread, std::string sessionBusAddress, ChangeCallback onChange);

    /// The connection to the accessibility bus; only while usable.
    BusConnection& connection() { return *bus_; }

    /// Enables accessibility for the session, starting the service if need be. Nothing happens without a
    /// session bus.
    void enable();

  private:
    void watchService();
    void sendEnable();
    void followService(const std::string& owner);
    void askForAddress();
    void takeAddress(const std::string& address);
    void askWhetherEnabled();
    void takeStatus(const BusIncoming& signal);
    void dropBus();
    void update();

    BusThread& thread_;
    const ChangeCallback onChange_;
    std::string address_;  // of bus_
    bool enabled_ = false;
    bool wanted_ = false;  // `enable` was called and has not worked yet
    bool usable_ = false;
    BusTimer askAgain_;
    BusConnection session_;
    std::optional<BusService> service_;
    BusSlot enabling_;
    std::unique_ptr<BusConnection> bus_;
};

}  // namespace purlock::host_linux
