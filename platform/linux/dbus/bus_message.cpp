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

BusCall& BusCall::appendBasic(char type, const void* value) {
    valid_ = valid_ && sd_bus_message_append_basic(message_.get(), type, value) >= 0;
    return *this;
}

BusCall& BusCall::append(bool value) {
    const int number = value ? 1 : 0;
    return appendBasic(SD_BUS_TYPE_BOOLEAN, &number);
}

BusCall& BusCall::appendVariant(bool value) {
    valid_ = valid_ && sd_bus_message_open_container(message_.get(), SD_BUS_TYPE_VARIANT, "b") >= 0;
    append(value);
    valid_ = valid_ && sd_bus_message_close_container(message_.get()) >= 0;
    return *this;
}

BusCall& BusCall::appendEmptyTexts() {
    valid_ = valid_ && sd_bus_message_append(message_.get(), "as", 0) >= 0;
    return *this;
}

BusCall& BusCall::allowStart() {
    if (valid_) sd_bus_message_set_auto_start(message_.get(), 1);
    return *this;
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
