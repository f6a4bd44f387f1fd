#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/dbus/bus_calls.h"
#include "platform/linux/dbus/bus_connection.h"

namespace purlock::host_linux {

/// A service that other programs offer under a well-known name of a bus: who owns the name, the owner's
/// signals, and calls to it.
///
/// Signals and calls go by the owner's unique name, so that no other peer can send or answer them. They end
/// when the name gets another owner, or none. Made when the connection is there and dropped when it is lost;
/// on the bus thread.
class BusService {
  public:
    /// The owner's unique name, empty when nobody owns the name. Called first with the owner as it is, then
    /// at each change, when the matches and calls of the former owner have ended; not from within the
    /// constructor. It may drop the service.
    using OwnerCallback = std::function<void(const std::string& owner)>;

    BusService(BusConnection& connection, std::string name, OwnerCallback onOwner);
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    const std::string& owner() const { return owner_; }

    /// Has the bus deliver those of the owner's signals that match `conditions`, which are D-Bus's own text
    /// form: "path='/',member='Changed'".
    void listen(std::string_view conditions, BusConnection::SignalCallback onSignal);

    /// Without an owner the call cannot be sent.
    BusCall newCall(const char* path, const char* interface, const char* member) const;

    /// As `BusCalls::send`.
    bool call(const BusCall& call, std::chrono::milliseconds timeLimit,
              BusConnection::ReplyCallback onReply) {
        return calls_.send(call, timeLimit, std::move(onReply));
    }

  private:
    void listenToOwnerChanges();
    void askForOwner();
    void take(const std::string& owner);

    BusConnection& connection_;
    const std::string name_;
    const OwnerCallback onOwner_;
    std::string owner_;
    bool known_ = false;
    BusSlot ownerChanges_;
    BusSlot question_;  // who the owner is
    std::vector<BusSlot> signals_;
    BusCalls calls_{connection_};
};

}  // namespace purlock::host_linux
