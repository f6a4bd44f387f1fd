#include "platform/linux/dbus/bus_connection.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <algorithm>
#include <utility>

#include "platform/linux/dbus/bus_address.h"

namespace purlock::host_linux {

namespace {

constexpr std::chrono::milliseconds firstDelay{100};
constexpr std::chrono::milliseconds longestDelay{30'000};     // while the socket's appearance is watched
constexpr std::chrono::milliseconds longestBlindDelay{1000};  // while it cannot be
constexpr std::chrono::milliseconds listeningDelay{5};  // a socket is there before anybody listens to it

constexpr const char* localPath = "/org/freedesktop/DBus/Local";
constexpr const char* localName = "org.freedesktop.DBus.Local";

}  // namespace

/// The callback of a call, owned by its slot.
struct BusConnection::PendingCall {
    PendingCall(std::shared_ptr<std::size_t> pendingCalls, ReplyCallback onReply)
        : count(std::move(pendingCalls)), callback(std::move(onReply)) {
        ++*count;
    }
    ~PendingCall() {
        if (callback) --*count;
    }
    PendingCall(const PendingCall&) = delete;
    PendingCall& operator=(const PendingCall&) = delete;

    static void destroy(void* pending) { delete static_cast<PendingCall*>(pending); }

    /// The callback, which runs once: the slot may be kept for longer.
    ReplyCallback take() {
        --*count;
        return std::exchange(callback, {});
    }

    const std::shared_ptr<std::size_t> count;
    ReplyCallback callback;
};

struct BusConnection::Match {
    static void destroy(void* match) { delete static_cast<Match*>(match); }

    SignalCallback callback;
};

/// The functions that sd-bus calls. A result other than 0 would keep a signal from other rules that match it.
struct BusConnection::Callbacks {
    static int onConnected(sd_bus_message*, void* self, sd_bus_error*) {
        static_cast<BusConnection*>(self)->becomeConnected();
        return 0;
    }

    static int onDisconnected(sd_bus_message*, void* self, sd_bus_error*) {
        static_cast<BusConnection*>(self)->becomeLost();
        return 0;
    }

    /// The slot lives until this returns, also when the callback drops the connection.
    static int onReply(sd_bus_message* message, void* pending, sd_bus_error*) {
        static_cast<PendingCall*>(pending)->take()(BusIncoming(message));
        return 0;
    }

    static int onSignal(sd_bus_message* message, void* match, sd_bus_error*) {
        static_cast<Match*>(match)->callback(BusIncoming(message));
        return 0;
    }
};

void BusSlot::Deleter::operator()(sd_bus_slot* slot) const {
    sd_bus_slot_set_floating(slot, 0);  // else the bus would keep it
    sd_bus_slot_unref(slot);
}

void BusConnection::BusDeleter::operator()(sd_bus* bus) const {
    sd_bus_detach_event(bus);
    sd_bus_close_unref(bus);  // without a flush, which would wait
}

BusConnection::BusConnection(BusThread& thread, std::string address, BusConnectionEvents events)
    : thread_(thread),
      address_(std::move(address)),
      events_(std::move(events)),
      retry_(thread),
      delay_(firstDelay) {
    connect();
}

BusConnection::~BusConnection() = default;

void BusConnection::connect() {
    bus_.reset();
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) >= 0) {
        bus_.reset(bus);
        if (start()) return;
    }
    bus_.reset();
    retryLater();
}

bool BusConnection::start() {
    sd_bus* bus = bus_.get();
    return sd_bus_set_address(bus, address_.c_str()) >= 0 && sd_bus_set_bus_client(bus, 1) >= 0 &&
           sd_bus_negotiate_fds(bus, 0) >= 0 && sd_bus_set_connected_signal(bus, 1) >= 0 &&
           sd_bus_set_close_on_exit(bus, 0) >= 0 && watchState() &&
           sd_bus_attach_event(bus, thread_.event(), SD_EVENT_PRIORITY_NORMAL) >= 0 && sd_bus_start(bus) >= 0;
}

/// Both signals are made by sd-bus itself and never sent over the bus.
bool BusConnection::watchState() {
    return sd_bus_match_signal_async(bus_.get(), nullptr, localName, localPath, localName, "Connected",
                                     &Callbacks::onConnected, nullptr, this) >= 0 &&
           sd_bus_match_signal_async(bus_.get(), nullptr, localName, localPath, localName, "Disconnected",
                                     &Callbacks::onDisconnected, nullptr, this) >= 0;
}

void BusConnection::retryLater() {
    delay_ = std::min(delay_, watchSocket() ? longestDelay : longestBlindDelay);
    retry_.start(delay_, [this] { connect(); });
    delay_ *= 2;
}

bool BusConnection::watchSocket() {
    const auto path = pathOfBusAddress(address_);
    if (!path || !socket_.begin(*path)) {
        socketInput_.reset();
        return false;
    }
    if (!socketInput_) {
        socketInput_ = std::make_unique<BusInput>(thread_, socket_.descriptor(), [this] {
            if (socket_.takeEvents()) socketAppeared();
        });
    }
    return true;
}

void BusConnection::socketAppeared() {
    if (!retry_.running()) return;  // it is being connected to
    delay_ = firstDelay;
    retry_.start(listeningDelay, [this] { connect(); });
}

void BusConnection::becomeConnected() {
    const char* name = nullptr;
    uniqueName_ = sd_bus_get_unique_name(bus_.get(), &name) >= 0 && name != nullptr ? name : "";
    connected_ = true;
    delay_ = firstDelay;
    socketInput_.reset();
    socket_.end();
    if (events_.connected) events_.connected();
}

/// Also reached when a connection fails before it was ever complete.
void BusConnection::becomeLost() {
    const bool wasConnected = std::exchange(connected_, false);
    uniqueName_.clear();
    retryLater();  // the dead bus is dropped then, not within its own callback
    if (wasConnected && events_.lost) events_.lost();
}

BusCall BusConnection::newCall(const BusMethod& method) const {
    sd_bus_message* message = nullptr;
    if (!connected_ ||
        sd_bus_message_new_method_call(bus_.get(), &message, method.destination.c_str(), method.path.c_str(),
                                       method.interface.c_str(), method.member.c_str()) < 0) {
        return BusCall(nullptr);
    }
    sd_bus_message_set_auto_start(message, 0);  // asking after a service must not start it
    return BusCall(OwnedBusMessage(message));
}

BusSlot BusConnection::call(const BusCall& call, std::chrono::milliseconds timeLimit, ReplyCallback onReply) {
    if (!connected_ || !call.good() || *pendingCalls_ >= maximumPendingCalls) return BusSlot();
    auto pending = std::make_unique<PendingCall>(pendingCalls_, std::move(onReply));
    const auto microseconds = static_cast<std::uint64_t>(std::chrono::microseconds(timeLimit).count());
    sd_bus_slot* slot = nullptr;
    if (sd_bus_call_async(bus_.get(), &slot, call.message(), &Callbacks::onReply, pending.get(),
                          microseconds) < 0) {
        return BusSlot();
    }
    sd_bus_slot_set_destroy_callback(slot, &PendingCall::destroy);
    static_cast<void>(pending.release());  // the slot has it now
    sd_bus_slot_set_floating(slot, 1);     // a slot that is kept after the reply does not keep the bus
    return BusSlot(slot);
}

void BusConnection::send(const BusCall& call) {
    if (!connected_ || !call.good()) return;
    sd_bus_message_set_expect_reply(call.message(), 0);
    sd_bus_send(bus_.get(), call.message(), nullptr);
}

BusSlot BusConnection::addMatch(const std::string& rule, SignalCallback onSignal) {
    if (!connected_) return BusSlot();
    auto match = std::make_unique<Match>();
    match->callback = std::move(onSignal);
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(bus_.get(), &slot, rule.c_str(), &Callbacks::onSignal, nullptr, match.get()) <
        0) {
        return BusSlot();
    }
    sd_bus_slot_set_destroy_callback(slot, &Match::destroy);
    static_cast<void>(match.release());  // the slot has it now
    return BusSlot(slot);
}

}  // namespace purlock::host_linux
