#pragma once

#include <filesystem>
#include <optional>

#include "platform/linux/system/environment.h"

namespace purlock::host_linux {

// The user's folders by the XDG Base Directory Specification: the variable when it holds an absolute path,
// else the default below the home folder (HOME, else the user database). Absent when there is no home folder
// to be had.

std::optional<std::filesystem::path> homeDirectory(const Environment& environment = processEnvironment);

/// `XDG_CONFIG_HOME`, else ~/.config.
std::optional<std::filesystem::path> configDirectory(const Environment& environment = processEnvironment);

/// `XDG_DATA_HOME`, else ~/.local/share: the host's application support directory.
std::optional<std::filesystem::path> dataDirectory(const Environment& environment = processEnvironment);

}  // namespace purlock::host_linux
