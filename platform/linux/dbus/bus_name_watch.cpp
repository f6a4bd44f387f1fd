#include "platform/linux/dbus/bus_name_watch.h"

#include <utility>

namespace purlock::host_linux {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr std::chrono::seconds timeLimit{5};

}  // namespace

BusNameWatch::BusNameWatch(BusConnection& connection, std::string name, OwnerCallback onOwner)
    : name_(std::move(name)), onOwner_(std::move(onOwner)) {
    const std::string rule =
        "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
        "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
        name_ + "'";
    match_ = connection.addMatch(rule, [this](const BusIncoming& signal) {
        BusReader reader = signal.reader();
        const auto changed = reader.nextText();
        reader.nextText();  // the former owner
        const auto owner = reader.nextText();
        if (changed == name_ && owner) take(*owner);
    });
    askForOwner(connection);
}

void BusNameWatch::askForOwner(BusConnection& connection) {
    auto call = connection.newCall({busName, "/org/freedesktop/DBus", busName, "GetNameOwner"});
    call.append(name_);
    // A call that cannot be sent means that the connection is about to be lost, and the watch with it.
    question_ = connection.call(call, timeLimit, [this](const BusIncoming& reply) {
        if (known_) return;  // a change that came first is newer
        take(reply.isError() ? "" : reply.reader().nextText().value_or(""));
    });
}

void BusNameWatch::take(const std::string& owner) {
    if (std::exchange(known_, true) && owner == owner_) return;
    owner_ = owner;
    const auto onOwner = onOwner_;  // outlives a watch that its callback drops
    onOwner(owner);
}

}  // namespace purlock::host_linux
