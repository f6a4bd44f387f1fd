#pragma once

#include <chrono>
#include <cstddef>
#include <list>

#include "platform/linux/dbus/bus_connection.h"

namespace purlock::host_linux {

/// The calls of an owner who may have several under way. Dropping it ends them all; on the bus thread.
class BusCalls {
  public:
    explicit BusCalls(BusConnection& connection) : connection_(connection) {}
    BusCalls(const BusCalls&) = delete;
    BusCalls& operator=(const BusCalls&) = delete;

    /// Sends the call, as `BusConnection::call` does. False, and `onReply` never runs, when it cannot be
    /// sent. `onReply` may drop this.
    bool send(const BusCall& call, std::chrono::milliseconds timeLimit, BusConnection::ReplyCallback onReply);

    /// How many have no reply yet.
    std::size_t underWay() const { return slots_.size(); }

    /// Ends them all.
    void clear() { slots_.clear(); }

  private:
    BusConnection& connection_;
    std::list<BusSlot> slots_;
};

}  // namespace purlock::host_linux
