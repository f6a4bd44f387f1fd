#include "platform/linux/dbus/bus_service.h"

#include <utility>

#include "base/text.h"

namespace purlock::host_linux {

BusService::BusService(BusConnection& connection, std::string name, OwnerCallback onOwner)
    : connection_(connection), name_(std::move(name)), onOwner_(std::move(onOwner)) {
    listenToOwnerChanges();
    askForOwner();
}

void BusService::listenToOwnerChanges() {
    const std::string rule =
        joined({"type='signal',sender='", messageBusName, "',path='", messageBusPath, "',interface='",
                messageBusName, "',member='NameOwnerChanged',arg0='", name_, "'"});
    ownerChanges_ = connection_.addMatch(rule, [this](const BusIncoming& signal) {
        BusReader reader = signal.reader();
        const auto changed = reader.nextText();
        reader.nextText();  // the former owner
        const auto owner = reader.nextText();
        if (changed == name_ && owner) take(*owner);
    });
}

void BusService::askForOwner() {
    auto call = connection_.newCall(messageBusMethod("GetNameOwner"));
    call.append(name_);
    // A call that cannot be sent means that the connection is about to be lost, and the service with it.
    question_ = connection_.call(call, busTimeLimit, [this](const BusIncoming& reply) {
        if (known_) return;  // a change that came first is newer
        take(reply.isError() ? "" : reply.reader().nextText().value_or(""));
    });
}

void BusService::take(const std::string& owner) {
    if (std::exchange(known_, true) && owner == owner_) return;
    owner_ = owner;
    signals_.clear();
    calls_.clear();
    const auto onOwner = onOwner_;  // outlives a service that its callback drops
    onOwner(owner);
}

void BusService::listen(std::string_view conditions, BusConnection::SignalCallback onSignal) {
    if (owner_.empty()) return;
    const std::string rule = joined({"type='signal',sender='", owner_, "',", conditions});
    signals_.push_back(connection_.addMatch(rule, std::move(onSignal)));
}

BusCall BusService::newCall(const char* path, const char* interface, const char* member) const {
    return connection_.newCall({owner_, path, interface, member});
}

}  // namespace purlock::host_linux
