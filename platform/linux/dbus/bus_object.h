#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_message.h"
#include "platform/linux/dbus/bus_writer.h"

struct sd_bus_vtable;

namespace purlock::host_linux {

/// Writes what a property holds or a method returns.
using BusWrite = std::function<void(BusWriter&)>;

/// A call of a peer, to be answered once: within the method, or later if it is kept. Kept calls are dropped
/// when the connection is lost; on the bus thread.
class BusRequest {
  public:
    explicit BusRequest(OwnedBusMessage call) : call_(std::move(call)) {}

    /// The arguments, whose types are those that the method names.
    BusReader arguments() const { return BusReader(call_.get()); }

    void answer(const BusWrite& write = {}) const;

    /// `error` is a name of D-Bus: "org.freedesktop.DBus.Error.InvalidArgs".
    void refuse(const char* error, const char* text) const;

  private:
    OwnedBusMessage call_;
};

/// One interface of an object that other programs reach over a bus. All texts are D-Bus's own: names, and
/// signatures like "a(ii)"; they outlive the object.
struct BusInterface {
    struct Property {
        const char* name;
        const char* type;
        BusWrite write;
        bool isConstant = false;
    };
    struct Method {
        const char* name;
        const char* arguments;
        const char* results;
        std::function<void(BusRequest)> run;
    };
    struct Signal {
        const char* name;
        const char* arguments;
    };

    std::string path;
    std::string name;
    std::vector<Property> properties;
    std::vector<Method> methods;
    std::vector<Signal> signals;
};

/// Offers an interface on a connection, until it is dropped. Every peer may call every method; properties are
/// only read. A call with arguments of other types than the method's is refused.
///
/// Made when the connection is there and dropped when it is lost; on the bus thread, where everything runs.
class BusObject {
  public:
    BusObject(BusConnection& connection, BusInterface interface);
    ~BusObject();
    BusObject(const BusObject&) = delete;
    BusObject& operator=(const BusObject&) = delete;

    /// Sends one of the interface's signals.
    void emit(const char* signal, const BusWrite& write = {}) const;

  private:
    struct Callbacks;

    BusConnection& connection_;
    const BusInterface interface_;
    const std::vector<sd_bus_vtable> table_;
    BusSlot slot_;
};

}  // namespace purlock::host_linux
