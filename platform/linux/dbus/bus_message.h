#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/dbus/bus_reader.h"

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

/// A method call on its way out: made by `BusConnection::newCall`, given its arguments in order, handed to
/// `BusConnection::call`. A failure to build it is found when it is sent. On the bus thread.
class BusCall {
  public:
    explicit BusCall(OwnedBusMessage message) : message_(std::move(message)), valid_(message_ != nullptr) {}

    BusCall& append(const std::string& text) { return appendBasic('s', text.c_str()); }
    BusCall& append(const char* text) { return appendBasic('s', text); }
    BusCall& append(std::int32_t number) { return appendBasic('i', &number); }
    BusCall& append(std::uint32_t number) { return appendBasic('u', &number); }
    BusCall& append(std::int64_t number) { return appendBasic('x', &number); }
    BusCall& append(double number) { return appendBasic('d', &number); }
    BusCall& append(bool value);

    /// A Boolean inside a variant, as org.freedesktop.DBus.Properties.Set takes it.
    BusCall& appendVariant(bool value);

    /// An empty array of texts.
    BusCall& appendEmptyTexts();

    /// Has the bus start the destination's service if it is not there. Without this, asking after one starts
    /// none.
    BusCall& allowStart();

    bool valid() const { return valid_; }
    sd_bus_message* message() const { return message_.get(); }

  private:
    BusCall& appendBasic(char type, const void* value);

    OwnedBusMessage message_;
    bool valid_;
};

/// A message that came in: a reply, an error in place of one, or a signal. Borrowed, for the length of the
/// callback.
class BusIncoming {
  public:
    explicit BusIncoming(sd_bus_message* message) : message_(message) {}

    /// Whether this is an error in place of a reply: from the peer, or "no reply" after the time limit or the
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
