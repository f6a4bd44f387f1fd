#pragma once

#include <string>

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

}  // namespace purlock::host_linux
