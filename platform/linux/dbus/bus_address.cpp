#include "platform/linux/dbus/bus_address.h"

#include <unistd.h>

#include <string_view>

#include "platform/linux/system/environment.h"

namespace purlock::host_linux {

namespace {

/// The bytes that the D-Bus specification lets stand in an address as they are.
bool isPlain(char byte) {
    constexpr std::string_view others = "-_/.\\*";
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
           others.find(byte) != std::string_view::npos;
}

std::optional<int> hexadecimalValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return std::nullopt;
}

/// Absent when an escape is not complete.
std::optional<std::string> unescaped(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        if (i + 2 >= text.size()) return std::nullopt;
        const auto high = hexadecimalValue(text[++i]);
        const auto low = hexadecimalValue(text[++i]);
        if (!high || !low) return std::nullopt;
        bytes += static_cast<char>(*high * 16 + *low);
    }
    return bytes;
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

bool isSocketAddress(std::string_view address) {
    constexpr std::string_view socket = "unix:";
    for (;;) {
        const std::size_t end = address.find(';');
        if (!address.substr(0, end).starts_with(socket)) return false;
        if (end == std::string_view::npos) return true;
        address.remove_prefix(end + 1);
    }
}

std::optional<std::string> pathOfBusAddress(std::string_view address) {
    constexpr std::string_view transport = "unix:";
    constexpr std::string_view key = "path=";
    address = address.substr(0, address.find(';'));
    if (!address.starts_with(transport)) return std::nullopt;
    address.remove_prefix(transport.size());
    while (!address.starts_with(key)) {
        const auto next = address.find(',');
        if (next == std::string_view::npos) return std::nullopt;
        address.remove_prefix(next + 1);
    }
    address = address.substr(key.size(), address.find(',') - key.size());
    return unescaped(address);
}

std::string sessionBusAddress() {
    if (auto address = filledVariable("DBUS_SESSION_BUS_ADDRESS")) return *address;
    const auto folder = filledVariable("XDG_RUNTIME_DIR");
    return busAddressOfPath(folder.value_or("/run/user/" + std::to_string(getuid())) + "/bus");
}

std::string systemBusAddress() {
    const auto address = filledVariable("DBUS_SYSTEM_BUS_ADDRESS");
    return address ? *address : busAddressOfPath("/run/dbus/system_bus_socket");
}

}  // namespace purlock::host_linux
