#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace purlock::host_linux {

/// Looks up an environment variable; absent when it is not set.
using Environment = std::function<std::optional<std::string>(const char* name)>;

/// The process's own environment.
std::optional<std::string> processEnvironment(const char* name);

// The user's folders by the XDG Base Directory Specification: the variable when it holds an absolute path,
// else the default below the home folder (HOME, else the user database). Absent when there is no home folder
// to be had.

std::optional<std::filesystem::path> homeDirectory(const Environment& environment = processEnvironment);

/// `XDG_CONFIG_HOME`, else ~/.config.
std::optional<std::filesystem::path> configDirectory(const Environment& environment = processEnvironment);

/// `XDG_DATA_HOME`, else ~/.local/share: the host's application support directory.
std::optional<std::filesystem::path> dataDirectory(const Environment& environment = processEnvironment);

}  // namespace purlock::host_linux
