#include "platform/linux/dbus/bus_address.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace purlock::host_linux {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// The bytes that the D-Bus specification lets stand in an address as they are.
bool isPlain(char byte) {
    constexpr std::string_view others = "-_/.\\*";
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
           others.find(byte) != std::string_view::npos;
}

}  // namespace

std::string busAddressOfPath(const std::string& path) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string address = "unix:path=";
    for (const char byte : path) {
        if (isPlain(byte)) {
            address += byte;
        } else {
            const auto value = static_cast<unsigned char>(byte);
            address += {'%', digits[value >> 4U], digits[value & 0xFU]};
        }
    }
    return address;
}

std::string sessionBusAddress() {
    if (std::string address = environment("DBUS_SESSION_BUS_ADDRESS"); !address.empty()) return address;
    std::string folder = environment("XDG_RUNTIME_DIR");
    if (folder.empty()) folder = "/run/user/" + std::to_string(getuid());
    return busAddressOfPath(folder + "/bus");
}

std::string systemBusAddress() {
    std::string address = environment("DBUS_SYSTEM_BUS_ADDRESS");
    return !address.empty() ? address : busAddressOfPath("/run/dbus/system_bus_socket");
}

}  // namespace purlock::host_linux
