#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_object.h"
#include "platform/linux/dbus/bus_service.h"
#include "platform/linux/tray/notifier_data.h"
#include "platform/linux/tray/notifier_menu.h"

namespace purlock::host_linux {

struct NotifierEvents {
    /// True if a tray shows the item: once as soon as it is known, then at each change.
    std::function<void(bool hosted)> hosted;

    /// A click, at a place on the screen as the tray counts; many trays pass 0, 0. A click that asks for the
    /// menu comes from trays that do not show it themselves.
    std::function<void(std::int32_t x, std::int32_t y)> activated;
    std::function<void(std::int32_t x, std::int32_t y)> menuWanted;

    // In the menu.
    std::function<void()> openChosen;
    std::function<void()> quitChosen;
};

/// The status notifier item (org.kde.StatusNotifierItem) of this program on a connection: the object itself,
/// and its registration with each watcher that is there, comes or comes back.
///
/// A watcher without a tray behind it has the item registered too, but does not count as hosting it. Made
/// when the connection is there and dropped when it is lost; events and calls on the bus thread.
class NotifierItem {
  public:
    NotifierItem(BusConnection& connection, NotifierLook look, NotifierEvents events);
    NotifierItem(const NotifierItem&) = delete;
    NotifierItem& operator=(const NotifierItem&) = delete;

    /// Tells the tray what of it differs.
    void setLook(NotifierLook look);

  private:
    BusInterface interface() const;
    void appendToolTip(BusWriter& writer) const;
    void chosen(std::size_t entry) const;
    void watcherChanged(const std::string& owner);
    void listenToHosts();
    void registerItem();
    void askForHost();
    void setHosted(bool hosted);

    BusConnection& connection_;
    const NotifierEvents events_;
    NotifierLook look_;
    bool known_ = false;
    bool hosted_ = false;
    const NotifierMenu menu_;
    const BusObject object_;
    BusService watcher_;
};

}  // namespace purlock::host_linux
