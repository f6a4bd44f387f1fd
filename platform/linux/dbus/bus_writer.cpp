#include "platform/linux/dbus/bus_writer.h"

#include <systemd/sd-bus.h>

namespace purlock::host_linux {

BusWriter& BusWriter::appendBasic(char type, const void* value) {
    good_ = good_ && sd_bus_message_append_basic(message_, type, value) >= 0;
    return *this;
}

BusWriter& BusWriter::append(bool value) {
    const int number = value ? 1 : 0;
    return appendBasic(SD_BUS_TYPE_BOOLEAN, &number);
}

BusWriter& BusWriter::appendBytes(std::span<const std::uint8_t> bytes) {
    good_ = good_ && sd_bus_message_append_array(message_, SD_BUS_TYPE_BYTE, bytes.data(), bytes.size()) >= 0;
    return *this;
}

BusWriter& BusWriter::entry(const char* key, const std::string& text) {
    return fill(SD_BUS_TYPE_DICT_ENTRY, "sv", [&](BusWriter& writer) {
        writer.append(key).variant("s", [&](BusWriter& value) { value.append(text); });
    });
}

void BusWriter::open(char container, const char* contents) {
    good_ = good_ && sd_bus_message_open_container(message_, container, contents) >= 0;
}

void BusWriter::close() {
    good_ = good_ && sd_bus_message_close_container(message_) >= 0;
}

}  // namespace purlock::host_linux
