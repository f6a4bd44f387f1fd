#pragma once

#include <string>
#include <string_view>

namespace purlock::host_linux {

/// The bundle identifier by which the portable code knows an application, from its desktop file's id on
/// Linux: that of a known service's application, else the id itself. Pure; any thread.
///
/// Listed are the applications of the streaming services that are found on Linux: the service's own, where it
/// makes one, and those that others publish for it. A player that is known not to deliver what its service is
/// fixed to claim is left out: the Qobuz players for Linux that show the service's web page stay at CD
/// quality.
std::string bundleIdentifierOf(std::string_view desktopID);

/// True if the desktop file's id stands for that bundle identifier.
bool isBundleIdentifierOf(std::string_view bundleID, std::string_view desktopID);

}  // namespace purlock::host_linux
