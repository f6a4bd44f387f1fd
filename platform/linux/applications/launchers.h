#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace purlock::host_linux {

// Programs that run other programs: interpreters, shells, start helpers. A desktop file that starts with one
// says nothing of the process, and a process that runs one is named by what it runs. Pure; any thread.

/// True if the program at that path, or of that name, is one: "/usr/bin/python3.11", "electron29". A version
/// at the name's end does not count.
bool isLauncher(std::string_view program);

/// The script of an interpreter: the first word of its command line that is no option, or the module after
/// "-m". Absent where the command line holds the program's text itself ("-c"), or nothing.
std::optional<std::string> scriptOf(const std::vector<std::string>& arguments);

}  // namespace purlock::host_linux
