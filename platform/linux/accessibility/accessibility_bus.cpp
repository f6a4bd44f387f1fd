#include "platform/linux/accessibility/accessibility_bus.h"

#include <utility>

#include "base/text.h"
#include "platform/linux/dbus/bus_address.h"

namespace purlock::host_linux {

namespace {

constexpr const char* serviceName = "org.a11y.Bus";
constexpr const char* servicePath = "/org/a11y/bus";
constexpr const char* statusInterface = "org.a11y.Status";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr std::chrono::seconds callLimit{5};
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
    service_ = std::make_unique<BusNameWatch>(session_, serviceName,
                                              [this](const std::string& owner) { followService(owner); });
}

void AccessibilityBus::followService(const std::string& owner) {
    statusChanges_.reset();
    askAgain_.stop();
    enabled_ = false;
    dropBus();
    if (owner.empty()) return;
    statusChanges_ = session_.addMatch(
        joined({"type='signal',sender='", owner, "',path='", servicePath, "',interface='",
                propertiesInterface, "',member='PropertiesChanged',arg0='", statusInterface, "'"}),
        [this](const BusIncoming& signal) { takeStatus(signal); });
    askForAddress();
    askWhetherEnabled();
    if (wanted_) sendEnable();
}

BusCall AccessibilityBus::newServiceCall(const char* interface, const char* member) const {
    return session_.newCall({service_ ? service_->owner() : "", servicePath, interface, member});
}

void AccessibilityBus::askForAddress() {
    const auto call = newServiceCall(serviceName, "GetAddress");
    const bool sent = calls_.send(call, callLimit, [this](const BusIncoming& reply) {
        const auto address = reply.isError() ? std::nullopt : reply.reader().nextText();
        // Whoever owns the service's name could have a command run by another kind of address.
        if (address && isSocketAddress(*address)) return takeAddress(*address);
        askAgain_.start(pauseBeforeAskingAgain, [this] { askForAddress(); });
    });
    if (!sent && service_ && !service_->owner().empty()) {
        askAgain_.start(pauseBeforeAskingAgain, [this] { askForAddress(); });
    }
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
    auto call = newServiceCall(propertiesInterface, "Get");
    call.append(statusInterface).append("IsEnabled");
    calls_.send(call, callLimit, [this](const BusIncoming& reply) {
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
    call.append(statusInterface).append("IsEnabled").appendVariant(true);
    calls_.send(call, callLimit, [this](const BusIncoming& reply) {
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
