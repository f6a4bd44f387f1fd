#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace purlock::host_linux {

/// The path that a player's "xesam:url" names on this machine: of a file URL (RFC 8089) with no host or
/// "localhost", percent signs decoded; an absolute path as it stands. Absent for every other address and for
/// anything else that cannot be a path. Pure; any thread.
std::optional<std::string> localPathOf(std::string_view url);

}  // namespace purlock::host_linux
