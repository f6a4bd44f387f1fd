#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace purlock::host_linux {

enum class FileStatus {
    read,
    missing,
    unreadable,  // no permission, not a regular file, or an error in mid-read
    tooLarge,
};

struct FileText {
    FileStatus status = FileStatus::missing;
    std::string text;  // empty unless `read`
};

/// The whole of a regular file of at most `limit` bytes. Never waits for a pipe or a device that stands in
/// its place.
FileText readWholeFile(const std::filesystem::path& file, std::size_t limit);

/// True if an open file is a regular one, no pipe, socket or device.
bool isRegularFile(int descriptor);

/// The first `limit` bytes of a regular file (of the kernel's folders too); absent when it cannot be read. A
/// pipe, a socket or a device under that name is not opened, so this never waits for a writer. Any thread.
std::optional<std::string> readFile(const std::string& path, std::size_t limit);

/// The names in a folder but "." and "..", sorted by their bytes, at most `limit` of them; absent when it
/// cannot be read. Any thread.
std::optional<std::vector<std::string>> namesInFolder(const std::string& path, std::size_t limit);

}  // namespace purlock::host_linux
