#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/dbus/bus_message.h"
#include "platform/linux/dbus/bus_thread.h"
#include "platform/linux/system/path_watch.h"

struct sd_bus;
struct sd_bus_slot;

namespace purlock::host_linux {

/// A match rule, an exported object or a call under way. Dropping it ends that: its callback never runs
/// again. Drop it when the connection is lost, at the latest; on the bus thread, also from within its own
/// callback.
class BusSlot {
  public:
    BusSlot() = default;
    explicit BusSlot(sd_bus_slot* slot) : slot_(slot) {}
    void reset() { slot_.reset(); }
    explicit operator bool() const { return slot_ != nullptr; }

  private:
    struct Deleter {
        void operator()(sd_bus_slot* slot) const;
    };
    std::unique_ptr<sd_bus_slot, Deleter> slot_;
};

/// How long the bus, or a service of the desktop, may take to answer a call that nothing else limits.
inline constexpr std::chrono::seconds busTimeLimit{5};

/// Callbacks of a connection to its owner, on the bus thread. Match rules are added anew at each `connected`.
struct BusConnectionEvents {
    std::function<void()> connected;
    std::function<void()> lost;  // only after `connected`; every call under way has had its error by then
};

/// A connection to a message bus that is there whenever the bus is.
///
/// Lives on the bus thread, where every call and callback happens; nothing here waits. A bus that is not
/// there is tried again when its socket appears, and after 100 ms, then after twice as long each time up to
/// 30 s; up to 1 s where the socket's appearance cannot be watched. While connected nothing wakes up.
/// Dropping it ends everything without a further callback.
///
/// Of what a peer may send: sd-bus takes messages of up to 128 MB (the limit of D-Bus itself), one at a time,
/// and frees each after its callback. Nothing lowers that, so one such message is what memory may grow by for
/// a moment; how much of it is kept is up to `BusReader`. File descriptors are not accepted.
class BusConnection {
  public:
    using ReplyCallback = std::function<void(const BusIncoming&)>;
    using SignalCallback = std::function<void(const BusIncoming&)>;

    /// At most this many calls under way; more are refused.
    static constexpr std::size_t maximumPendingCalls = 4096;

    BusConnection(BusThread& thread, std::string address, BusConnectionEvents events);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    bool isConnected() const { return connected_; }

    /// This connection's own unique name; empty while there is none.
    const std::string& uniqueName() const { return uniqueName_; }

    BusCall newCall(const BusMethod& method) const;

    /// Sends the call. `onReply` runs once, later: with the reply, or with an error after `timeLimit` at the
    /// latest. It never runs when the slot is dropped first, or when the call cannot be sent: then the slot
    /// is empty.
    [[nodiscard]] BusSlot call(const BusCall& call, std::chrono::milliseconds timeLimit,
                               ReplyCallback onReply);

    /// Sends the call and asks for no reply.
    void send(const BusCall& call);

    /// Has the bus deliver the signals that match `rule`, D-Bus's own text form. A rule that names a
    /// well-known sender also lets through what any peer sends directly to this connection; name the owner's
    /// unique name instead.
    BusSlot addMatch(const std::string& rule, SignalCallback onSignal);

    /// For exporting objects; null while there is no bus.
    sd_bus* handle() const { return bus_.get(); }

  private:
    struct BusDeleter {
        void operator()(sd_bus* bus) const;
    };
    struct PendingCall;
    struct Match;
    struct Callbacks;

    void connect();
    bool start();
    bool watchState();
    void retryLater();
    bool watchSocket();
    void socketAppeared();
    void becomeConnected();
    void becomeLost();

    BusThread& thread_;
    const std::string address_;
    const BusConnectionEvents events_;
    std::unique_ptr<sd_bus, BusDeleter> bus_;
    std::shared_ptr<std::size_t> pendingCalls_ = std::make_shared<std::size_t>(0);
    std::string uniqueName_;
    BusTimer retry_;
    PathWatch socket_;  // while there is no connection
    std::unique_ptr<BusInput> socketInput_;
    std::chrono::milliseconds delay_;
    bool connected_ = false;
};

}  // namespace purlock::host_linux
