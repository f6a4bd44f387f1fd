#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace purlock::host_linux {

/// The whole content of a regular file of at most `maximumBytes`; absent for anything else, and for a file
/// that cannot be read. Never waits for a writer, as opening a pipe would. Any thread.
std::optional<std::string> readRegularFile(const std::string& path, std::size_t maximumBytes);

}  // namespace purlock::host_linux
