#include "platform/linux/accessibility/accessibility_bus.h"

#include <utility>

#include "base/text.h"
#include "platform/linux/dbus/bus_address.h"

namespace purlock::host_linux {

namespace {

constexpr const char* serviceName = "org.a11y.Bus";
constexpr const char* servicePath = "/org/a11y/bus";
constexpr const char* statusInterface = "org.a11y.Status";
constexpr std::chrono::milliseconds pauseBeforeAskingAgain{1000};

}  // namespace

AccessibilityBus::AccessibilityBus(BusThread& thread, std::string sessionBusAddress, ChangeCallback onChange)
    : thread_(thread),
      onChange_(std::move(onChange)),
      askAgain_(thread),
      session_(thread, std::move(sessionBusAddress),
               {[this] { watchService(); },
                [this] {
                    service_.reset();
                    followService("");
                }}) {}

void AccessibilityBus::watchService() {
    service_.emplace(session_, serviceName, [this](const std::string& owner) { followService(owner); });
}

void AccessibilityBus::followService(const std::string& owner) {
    askAgain_.stop();
    enabled_ = false;
    dropBus();
    if (owner.empty()) return;
    service_->listen(joined({"path='", servicePath, "',interface='", propertiesInterface,
                             "',member='PropertiesChanged',arg0='", statusInterface, "'"}),
                     [this](const BusIncoming& signal) { takeStatus(signal); });
    askForAddress();
    askWhetherEnabled();
    if (wanted_) sendEnable();
}

void AccessibilityBus::askForAddress() {
    if (!service_) return;
    const auto askLater = [this] { askAgain_.start(pauseBeforeAskingAgain, [this] { askForAddress(); }); };
    const auto call = service_->newCall(servicePath, serviceName, "GetAddress");
    const bool sent = service_->call(call, busTimeLimit, [this, askLater](const BusIncoming& reply) {
        const auto address = reply.isError() ? std::nullopt : reply.reader().nextText();
        // The owner of the service's name could have a command run by another kind of address.
        if (address && isSocketAddress(*address)) return takeAddress(*address);
        askLater();
    });
    if (!sent && !service_->owner().empty()) askLater();
}

/// A bus that was started anew listens elsewhere, so the address is asked for until there is a connection.
void AccessibilityBus::takeAddress(const std::string& address) {
    if (bus_ && address == address_) {
        if (!bus_->isConnected()) askAgain_.start(pauseBeforeAskingAgain, [this] { askForAddress(); });
        return;
    }
    dropBus();
    address_ = address;
    bus_ = std::make_unique<BusConnection>(thread_, address,
                                           BusConnectionEvents{[this] { update(); },
                                                               [this] {
                                                                   update();
                                                                   askForAddress();
                                                               }});
    askAgain_.start(pauseBeforeAskingAgain, [this] {
        if (bus_ && !bus_->isConnected()) askForAddress();
    });
}

void AccessibilityBus::askWhetherEnabled() {
    if (!service_) return;
    auto call = service_->newCall(servicePath, propertiesInterface, "Get");
    call.append(statusInterface).append("IsEnabled");
    service_->call(call, busTimeLimit, [this](const BusIncoming& reply) {
        const auto value = reply.isError() ? std::nullopt : reply.reader().next();
        enabled_ = value && value->boolean().value_or(false);
        update();
    });
}

void AccessibilityBus::takeStatus(const BusIncoming& signal) {
    BusReader reader = signal.reader();
    reader.next();  // the interface, which the rule has matched
    const auto changed = reader.next();
    const BusValue* enabled = changed ? changed->find("IsEnabled") : nullptr;
    if (enabled == nullptr) return;
    enabled_ = enabled->boolean().value_or(false);
    update();
}

void AccessibilityBus::enable() {
    wanted_ = true;
    sendEnable();
}

void AccessibilityBus::sendEnable() {
    auto call = session_.newCall({serviceName, servicePath, propertiesInterface, "Set"});
    call.allowStart();
    call.append(statusInterface).append("IsEnabled").variant("b", [](BusWriter& value) {
        value.append(true);
    });
    enabling_ = session_.call(call, busTimeLimit, [this](const BusIncoming& reply) {
        if (reply.isError()) return;
        wanted_ = false;
        askWhetherEnabled();  // in case the service does not tell of the change
    });
}

void AccessibilityBus::dropBus() {
    bus_.reset();
    address_.clear();
    update();
}

void AccessibilityBus::update() {
    const bool usable = enabled_ && bus_ && bus_->isConnected();
    if (std::exchange(usable_, usable) != usable) onChange_(usable);
}

}  // namespace purlock::host_linux
