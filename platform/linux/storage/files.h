#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

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

/// Replaces `file` by `text` in one step: readers see the old text or the new, never half of one. The
/// temporary file is nameless until it is complete, where the file system can do that, so that a crash leaves
/// none behind; elsewhere it has a fixed name beside `file`. There is no flush to disk. Returns whether it
/// was done.
bool replaceFile(const std::filesystem::path& file, std::string_view text);

}  // namespace purlock::host_linux
