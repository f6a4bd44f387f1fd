#include "platform/linux/activation/instance_activation.h"

#include <systemd/sd-bus.h>

#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/linux/dbus/bus_name_watch.h"

namespace purlock::host_linux {

namespace {

constexpr const char* serviceName = "org.purlock.Purlock";
constexpr const char* objectPath = "/org/purlock/Purlock";
constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr std::chrono::seconds timeLimit{5};

}  // namespace

/// On the bus thread.
class InstanceActivation::Service {
  public:
    Service(BusThread& thread, std::string address, std::function<void()> onCall)
        : onCall_(std::move(onCall)),
          connection_(thread, std::move(address), {[this] { connected(); }, [this] { object_.reset(); }}) {}

  private:
    static const sd_bus_vtable* table();

    /// Files and actions there are none; whoever names some wants to see the program all the same.
    static int onCall(sd_bus_message* call, void* service, sd_bus_error*) {
        static_cast<Service*>(service)->onCall_();
        return sd_bus_reply_method_return(call, "");
    }

    void connected() {
        sd_bus_slot* slot = nullptr;
        if (sd_bus_add_object_vtable(connection_.handle(), &slot, objectPath, applicationInterface, table(),
                                     this) >= 0) {
            object_ = BusSlot(slot);
        }
        auto call = connection_.newCall(
            {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"});
        call.append(serviceName).append(std::uint32_t{0});  // in line behind another owner, if there is one
        connection_.send(call);
    }

    const std::function<void()> onCall_;
    BusConnection connection_;
    BusSlot object_;
};

// The macros of sd-bus are C.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wold-style-cast"
const sd_bus_vtable* InstanceActivation::Service::table() {
    static const std::array members{
        sd_bus_vtable SD_BUS_VTABLE_START(0),
        sd_bus_vtable SD_BUS_METHOD("Activate", "a{sv}", "", &Service::onCall, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("Open", "asa{sv}", "", &Service::onCall, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("ActivateAction", "sava{sv}", "", &Service::onCall,
                                    SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_VTABLE_END};
    return members.data();
}
#pragma GCC diagnostic pop

InstanceActivation::InstanceActivation(RunLoop& mainLoop, BusThread& busThread, std::string busAddress,
                                       std::function<void()> onActivate)
    : link_(std::make_shared<Link>()) {
    link_->onActivate = std::move(onActivate);
    const auto onCall = [&mainLoop, weak = std::weak_ptr(link_)] {
        const auto link = weak.lock();
        if (!link || link->underWay.exchange(true)) return;
        mainLoop.post([weak] {
            const auto running = weak.lock();
            if (!running) return;
            running->underWay = false;
            running->onActivate();
        });
    };
    service_ = std::make_unique<OnBusThread<Service>>(
        busThread, [&busThread, address = std::move(busAddress), onCall] {
            return std::make_unique<Service>(busThread, address, onCall);
        });
}

InstanceActivation::~InstanceActivation() = default;

namespace {

/// The one call of a second start. On a bus thread of its own.
class Activator {
  public:
    Activator(BusThread& thread, const std::string& address, std::function<void(bool)> onDone)
        : onDone_(std::move(onDone)),
          connection_(thread, address, {[this] { connected(); }, [this] { onDone_(false); }}) {
        if (connection_.handle() == nullptr) onDone_(false);
    }

  private:
    /// An instance that has just started gets its name a moment later.
    void connected() {
        instance_.emplace(connection_, serviceName, [this](const std::string& owner) {
            if (!owner.empty()) activate();
        });
    }

    void activate() {
        auto call = connection_.newCall({serviceName, objectPath, applicationInterface, "Activate"});
        if (call.valid()) sd_bus_message_append(call.message(), "a{sv}", 0);
        const bool sent = connection_.call(call, timeLimit,
                                           [this](const BusIncoming& reply) { onDone_(!reply.isError()); });
        if (!sent) onDone_(false);
    }

    const std::function<void(bool)> onDone_;
    BusConnection connection_;
    std::optional<BusNameWatch> instance_;
};

}  // namespace

bool activateRunningInstance(const std::string& busAddress, std::chrono::milliseconds longest) {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<bool> outcome;
    BusThread thread;
    const OnBusThread<Activator> activator(thread, [&] {
        return std::make_unique<Activator>(thread, busAddress, [&](bool done) {
            const std::lock_guard lock(mutex);
            if (!outcome) outcome = done;
            changed.notify_one();
        });
    });
    std::unique_lock lock(mutex);
    changed.wait_for(lock, longest, [&] { return outcome.has_value(); });
    return outcome.value_or(false);
}

}  // namespace purlock::host_linux
