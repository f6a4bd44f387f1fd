#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace purlock::host_linux {

/// The first `limit` bytes of a file of the kernel's process file system; absent when it cannot be read or is
/// no regular file (so that a pipe in its place cannot hold the reader up). Any thread.
std::optional<std::string> readBoundedFile(const std::string& path,
                                           std::size_t limit = std::size_t{64} * 1024);

}  // namespace purlock::host_linux
