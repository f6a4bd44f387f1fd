#include "platform/linux/dbus/bus_object.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace purlock::host_linux {

/// The functions that sd-bus calls.
struct BusObject::Callbacks {
    static int onProperty(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply,
                          void* object, sd_bus_error*) {
        const auto& properties = static_cast<const BusObject*>(object)->interface_.properties;
        const auto property =
            std::ranges::find(properties, std::string_view(name), &BusInterface::Property::name);
        BusWriter writer(reply);
        if (property != properties.end()) property->write(writer);
        return writer.good() ? 1 : -EINVAL;
    }

    static int onMethod(sd_bus_message* call, void* object, sd_bus_error*) {
        const auto& methods = static_cast<const BusObject*>(object)->interface_.methods;
        const std::string_view name = sd_bus_message_get_member(call);
        const auto method = std::ranges::find(methods, name, &BusInterface::Method::name);
        if (method == methods.end()) return 0;
        const auto run = method->run;  // outlives an object that it drops
        run(BusRequest(OwnedBusMessage(sd_bus_message_ref(call))));
        return 1;
    }

    static std::vector<sd_bus_vtable> tableOf(const BusInterface& interface);
};

// The macros of sd-bus are C.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wold-style-cast"
std::vector<sd_bus_vtable> BusObject::Callbacks::tableOf(const BusInterface& interface) {
    std::vector<sd_bus_vtable> table{sd_bus_vtable SD_BUS_VTABLE_START(0)};
    for (const auto& [name, type, write, isConstant] : interface.properties) {
        table.push_back(isConstant ? sd_bus_vtable SD_BUS_PROPERTY(name, type, onProperty, 0,
                                                                   SD_BUS_VTABLE_PROPERTY_CONST)
                                   : sd_bus_vtable SD_BUS_PROPERTY(name, type, onProperty, 0, 0));
    }
    for (const auto& [name, arguments, results, run] : interface.methods) {
        table.push_back(
            sd_bus_vtable SD_BUS_METHOD(name, arguments, results, onMethod, SD_BUS_VTABLE_UNPRIVILEGED));
    }
    for (const auto& [name, arguments] : interface.signals) {
        table.push_back(sd_bus_vtable SD_BUS_SIGNAL(name, arguments, 0));
    }
    table.push_back(sd_bus_vtable SD_BUS_VTABLE_END);
    return table;
}
#pragma GCC diagnostic pop

void BusRequest::answer(const BusWrite& write) const {
    sd_bus_message* message = nullptr;
    if (sd_bus_message_get_expect_reply(call_.get()) <= 0) return;  // the bus would refuse the reply
    if (sd_bus_message_new_method_return(call_.get(), &message) < 0) return;
    const OwnedBusMessage reply(message);
    BusWriter writer(message);
    if (write) write(writer);
    if (writer.good()) sd_bus_send(nullptr, message, nullptr);
}

void BusRequest::refuse(const char* error, const char* text) const {
    sd_bus_reply_method_errorf(call_.get(), error, "%s", text);
}

BusObject::BusObject(BusConnection& connection, BusInterface interface)
    : connection_(connection), interface_(std::move(interface)), table_(Callbacks::tableOf(interface_)) {
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_object_vtable(connection_.handle(), &slot, interface_.path.c_str(),
                                 interface_.name.c_str(), table_.data(), this) >= 0) {
        slot_ = BusSlot(slot);
    }
}

BusObject::~BusObject() = default;

void BusObject::emit(const char* signal, const BusWrite& write) const {
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_signal(connection_.handle(), &message, interface_.path.c_str(),
                                  interface_.name.c_str(), signal) < 0) {
        return;
    }
    const OwnedBusMessage owned(message);
    BusWriter writer(message);
    if (write) write(writer);
    if (writer.good()) sd_bus_send(connection_.handle(), message, nullptr);
}

}  // namespace purlock::host_linux
