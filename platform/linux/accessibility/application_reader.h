#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/accessibility/object_walker.h"
#include "platform/linux/accessibility/snapshot.h"
#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::host_linux {

/// Reads the tree of one application once: in bulk from its cache where the toolkit has one, else element by
/// element.
///
/// On the bus thread. Dropping it ends the reading. `onFinish` runs once, later, with nothing when the
/// application does not answer, is gone, or needs more than `timeLimit`.
class ApplicationReader {
  public:
    using Finish = std::function<void(std::optional<Snapshot>)>;
    static constexpr std::chrono::milliseconds timeLimit{3000};

    ApplicationReader(BusThread& thread, BusConnection& connection, std::string busName, Finish onFinish);
    ApplicationReader(const ApplicationReader&) = delete;
    ApplicationReader& operator=(const ApplicationReader&) = delete;

  private:
    void askForItems();
    void takeItems(const BusIncoming& reply);
    ObjectWalker& newWalker();
    void finish(std::optional<Snapshot> snapshot);

    BusConnection& connection_;
    const std::string busName_;
    const SnapshotLimits limits_;
    Finish onFinish_;
    BusTimer deadline_;
    std::unique_ptr<ObjectWalker> walker_;
    BusSlot question_;
};

}  // namespace purlock::host_linux
