#pragma once

#include <functional>
#include <string>

#include "platform/linux/dbus/bus_connection.h"

namespace purlock::host_linux {

/// Follows who owns a well-known name of a bus. Made when the connection is there and dropped when it is
/// lost; on the bus thread.
class BusNameWatch {
  public:
    /// The owner's unique name, empty when nobody owns the name. Called first with the owner as it is, then
    /// at each change; not from within the constructor.
    using OwnerCallback = std::function<void(const std::string& owner)>;

    BusNameWatch(BusConnection& connection, std::string name, OwnerCallback onOwner);
    BusNameWatch(const BusNameWatch&) = delete;
    BusNameWatch& operator=(const BusNameWatch&) = delete;

    const std::string& owner() const { return owner_; }

  private:
    void askForOwner(BusConnection& connection);
    void take(const std::string& owner);

    const std::string name_;
    const OwnerCallback onOwner_;
    std::string owner_;
    bool known_ = false;
    BusSlot match_;
    BusSlot question_;
};

}  // namespace purlock::host_linux
