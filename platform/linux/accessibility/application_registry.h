#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/dbus/bus_calls.h"
#include "platform/linux/dbus/bus_connection.h"

namespace purlock::host_linux {

/// Finds the connection of a process on the accessibility bus, among those that the registry lists. On the
/// bus thread.
///
/// It also registers for the rare events of windows that come to the front, which make a tree worth reading
/// anew. GTK 3 keeps its cache of elements only while someone has registered for an event, and without the
/// cache each element has to be asked by itself.
///
/// Process ids are asked of the bus, never of the application, and kept: a unique name never comes again on
/// one bus.
class ApplicationRegistry {
  public:
    using Found = std::function<void(std::optional<std::string> busName)>;

    explicit ApplicationRegistry(BusConnection& connection) : connection_(connection) {}
    ApplicationRegistry(const ApplicationRegistry&) = delete;
    ApplicationRegistry& operator=(const ApplicationRegistry&) = delete;

    /// Calls `onFound` later: with the connection of that very process, else with that of a process that
    /// descends from it (of a sandboxed application, the one that speaks for it), else with nothing.
    void find(std::int32_t pid, Found onFound);

  private:
    struct Search;

    void listen();
    void takeNames(const std::shared_ptr<Search>& search, const BusIncoming& reply);
    void askForProcess(const std::shared_ptr<Search>& search, const std::string& name);
    void conclude(Search& search) const;

    BusConnection& connection_;
    bool listening_ = false;
    std::map<std::string, std::int32_t> processes_;  // by unique name
    BusCalls calls_{connection_};
};

}  // namespace purlock::host_linux
