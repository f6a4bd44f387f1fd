#include "platform/linux/bluetooth/bluez_stack.h"

#include <utility>

#include "base/text.h"
#include "platform/linux/bluetooth/bluez_objects.h"
#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_service.h"

namespace purlock::host_linux {

namespace {

constexpr const char* daemonName = "org.bluez";
constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";
constexpr std::chrono::seconds pauseAfterFailure{2};

/// Some hundred devices with some fifty values each.
constexpr BusReadLimits objectsLimits{.totalTextBytes = 8U << 20U, .values = 200'000};

}  // namespace

/// Keeps the devices up to date, on the bus thread.
class BlueZStack::Watcher {
  public:
    Watcher(BusThread& thread, const std::string& address, std::shared_ptr<Shared> shared)
        : shared_(std::move(shared)),
          retry_(thread),
          connection_(thread, address, {[this] { watchDaemon(); }, [this] { forget(); }}) {}
    ~Watcher() { publish(std::nullopt); }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

  private:
    void watchDaemon() {
        daemon_.emplace(connection_, daemonName, [this](const std::string& owner) { follow(owner); });
    }

    /// The bus is gone.
    void forget() {
        daemon_.reset();
        follow("");
    }

    /// Another daemon, or none.
    void follow(const std::string& owner) {
        retry_.stop();
        objects_ = BlueZObjects();
        publish(std::nullopt);
        if (owner.empty()) return;
        const std::string manager = joined({"interface='", objectManager, "',member='"});
        daemon_->listen(manager + "InterfacesAdded'", [this](const BusIncoming& signal) { onAdded(signal); });
        daemon_->listen(manager + "InterfacesRemoved'",
                        [this](const BusIncoming& signal) { onRemoved(signal); });
        daemon_->listen(
            "interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',arg0='org.bluez.Device1'",
            [this](const BusIncoming& signal) { onChanged(signal); });
        askForObjects();
    }

    /// The signals that arrive before the answer tell of things that the answer contains.
    void askForObjects() {
        const auto call = daemon_->newCall("/", objectManager, "GetManagedObjects");
        const bool sent = daemon_->call(call, busTimeLimit, [this](const BusIncoming& reply) {
            const auto objects = reply.isError() ? std::nullopt : reply.reader(objectsLimits).next();
            if (!objects) return askAgainLater();
            answered_ = true;
            objects_.replaceAll(*objects);
            publishObjects();
        });
        answered_ = false;
        if (!sent) askAgainLater();
    }

    void askAgainLater() {
        retry_.start(pauseAfterFailure, [this] { askForObjects(); });
    }

    void onAdded(const BusIncoming& signal) {
        BusReader reader = signal.reader();
        const auto path = reader.nextText();
        const auto interfaces = reader.next();
        if (path && interfaces) objects_.add(*path, *interfaces);
        publishObjects();
    }

    void onRemoved(const BusIncoming& signal) {
        BusReader reader = signal.reader();
        const auto path = reader.nextText();
        const auto interfaces = reader.next();
        if (path && interfaces) objects_.remove(*path, *interfaces);
        publishObjects();
    }

    void onChanged(const BusIncoming& signal) {
        BusReader reader = signal.reader();
        reader.next();  // the interface, which the rule has matched
        const auto changed = reader.next();
        const auto invalidated = reader.next();
        if (!changed) return;
        objects_.change(std::string(signal.path()), *changed, invalidated.value_or(BusValue()));
        publishObjects();
    }

    void publishObjects() {
        if (answered_) publish(objects_.pairedDevices());
    }

    void publish(std::optional<std::vector<PairedBluetoothDevice>> devices) {
        const std::lock_guard lock(shared_->mutex);
        shared_->devices = std::move(devices);
    }

    const std::shared_ptr<Shared> shared_;
    BlueZObjects objects_;
    bool answered_ = false;  // whether this daemon has told of its objects
    BusTimer retry_;
    BusConnection connection_;
    std::optional<BusService> daemon_;  // while the bus is there
};

BlueZStack::BlueZStack(BusThread& thread, std::string busAddress)
    : watcher_(std::make_unique<OnBusThread<Watcher>>(
          thread, [&thread, address = std::move(busAddress), shared = shared_] {
              return std::make_unique<Watcher>(thread, address, shared);
          })) {}

BlueZStack::~BlueZStack() = default;

std::optional<std::vector<PairedBluetoothDevice>> BlueZStack::pairedDevices() {
    const std::lock_guard lock(shared_->mutex);
    return shared_->devices;
}

}  // namespace purlock::host_linux
