#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/dbus/bus_reader.h"
#include "platform/linux/dbus/bus_writer.h"

struct sd_bus;
struct sd_bus_message;

namespace purlock::host_linux {

struct BusMessageDeleter {
    void operator()(sd_bus_message* message) const;
};
using OwnedBusMessage = std::unique_ptr<sd_bus_message, BusMessageDeleter>;

/// Which operation of which object of which peer.
struct BusMethod {
    std::string destination;  // a well-known or a unique name
    std::string path;
    std::string interface;
    std::string member;
};

// The bus's own object, and what every object can be asked for (D-Bus Specification).
inline constexpr const char* messageBusName = "org.freedesktop.DBus";
inline constexpr const char* messageBusPath = "/org/freedesktop/DBus";
inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

/// An operation of the bus itself.
inline BusMethod messageBusMethod(const char* member) {
    return {messageBusName, messageBusPath, messageBusName, member};
}

/// A method call on its way out: made by `BusConnection::newCall`, given its arguments in order, handed to
/// `BusConnection::call`. A failure to build it is found when it is sent. On the bus thread.
class BusCall : public BusWriter {
  public:
    explicit BusCall(OwnedBusMessage message) : BusWriter(message.get()), message_(std::move(message)) {}

    /// Has the bus start the destination's service if it is not there. Without this, asking after one starts
    /// none.
    void allowStart();

    sd_bus_message* message() const { return message_.get(); }

  private:
    OwnedBusMessage message_;
};

/// A message that came in: a reply, an error in place of one, or a signal. Borrowed, for the length of the
/// callback.
class BusIncoming {
  public:
    explicit BusIncoming(sd_bus_message* message) : message_(message) {}

    /// True if this is an error in place of a reply: from the peer, or "no reply" after the time limit or the
    /// end of the connection.
    bool isError() const;
    std::string_view errorName() const;  // empty when it is none

    // Empty where the message has none.
    std::string_view sender() const;  // always a unique name, but for the bus itself
    std::string_view path() const;
    std::string_view interface() const;
    std::string_view member() const;
    std::string_view signature() const;

    /// Reads the body from where the last reader of this message stopped.
    BusReader reader(BusReadLimits limits = {}) const { return BusReader(message_, limits); }

  private:
    sd_bus_message* message_;
};

}  // namespace purlock::host_linux
