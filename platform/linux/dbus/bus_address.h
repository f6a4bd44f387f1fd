#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace purlock::host_linux {

// Where the well-known buses listen, in D-Bus's address form. Read from the environment at each call; any
// thread.

/// $DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in $XDG_RUNTIME_DIR, else that of the user's usual
/// runtime folder.
std::string sessionBusAddress();

/// $DBUS_SYSTEM_BUS_ADDRESS, else the usual socket.
std::string systemBusAddress();

/// The address of a socket in the file system; bytes that an address must not hold are escaped.
std::string busAddressOfPath(const std::string& path);

/// True if every bus that the address names is a socket of this machine. Other kinds of address run a command
/// or use the network.
bool isSocketAddress(std::string_view address);

/// The socket's path in an address; absent when the first bus that the address names has none.
std::optional<std::string> pathOfBusAddress(std::string_view address);

}  // namespace purlock::host_linux
