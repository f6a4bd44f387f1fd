#include "platform/linux/dbus/bus_message.h"

#include <systemd/sd-bus.h>

namespace purlock::host_linux {

namespace {

std::string_view orEmpty(const char* text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

}  // namespace

void BusMessageDeleter::operator()(sd_bus_message* message) const {
    sd_bus_message_unref(message);
}

void BusCall::allowStart() {
    if (good()) sd_bus_message_set_auto_start(message_.get(), 1);
}

bool BusIncoming::isError() const {
    return sd_bus_message_is_method_error(message_, nullptr) > 0;
}

std::string_view BusIncoming::errorName() const {
    const sd_bus_error* error = sd_bus_message_get_error(message_);
    return error != nullptr ? orEmpty(error->name) : std::string_view();
}

std::string_view BusIncoming::sender() const {
    return orEmpty(sd_bus_message_get_sender(message_));
}

std::string_view BusIncoming::path() const {
    return orEmpty(sd_bus_message_get_path(message_));
}

std::string_view BusIncoming::interface() const {
    return orEmpty(sd_bus_message_get_interface(message_));
}

std::string_view BusIncoming::member() const {
    return orEmpty(sd_bus_message_get_member(message_));
}

std::string_view BusIncoming::signature() const {
    return orEmpty(sd_bus_message_get_signature(message_, 1));
}

}  // namespace purlock::host_linux
