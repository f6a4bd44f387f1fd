#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_object.h"

namespace purlock::host_linux {

// The labels in the menus of every kind of tray.
inline constexpr const char* openLabel = "Open Purlock";
inline constexpr const char* quitLabel = "Quit Purlock";

/// The menu of a notifier item (com.canonical.dbusmenu), drawn by the tray: one level of entries that never
/// change. Some trays show it on the first click, even if the item asks for something else.
///
/// Made when the connection is there and dropped when it is lost; on the bus thread.
class NotifierMenu {
  public:
    static constexpr const char* path = "/StatusNotifierItem/Menu";

    /// `onChosen` is given the place of the entry in `labels`, which are plain texts.
    NotifierMenu(BusConnection& connection, std::vector<std::string> labels,
                 std::function<void(std::size_t)> onChosen);
    NotifierMenu(const NotifierMenu&) = delete;
    NotifierMenu& operator=(const NotifierMenu&) = delete;

  private:
    /// Entries are numbered from 1; 0 is the menu itself.
    bool isEntry(std::int32_t id) const { return id >= 1 && static_cast<std::size_t>(id) <= labels_.size(); }
    const std::string& labelOf(std::int32_t id) const { return labels_[static_cast<std::size_t>(id - 1)]; }
    BusInterface interface() const;
    void appendProperties(BusWriter& writer, std::int32_t id) const;
    void appendEntry(BusWriter& writer, std::int32_t id, bool withChildren) const;
    void answerLayout(const BusRequest& request) const;
    void answerGroupProperties(const BusRequest& request) const;
    void answerProperty(const BusRequest& request) const;
    void takeEvent(const BusRequest& request) const;
    void takeEvents(const BusRequest& request) const;
    void happened(std::int32_t id, const std::string& event) const;

    const std::vector<std::string> labels_;
    const std::function<void(std::size_t)> onChosen_;
    const BusObject object_;
};

}  // namespace purlock::host_linux
