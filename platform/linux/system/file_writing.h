#pragma once

#include <filesystem>
#include <string_view>

namespace purlock::host_linux {

/// Replaces `file` by `text` in one step: readers see the old text or the new, never half of one. The
/// temporary file beside `file` has a fixed name, so the next call replaces one that a crash has left. (A
/// nameless file, O_TMPFILE, would be left less often, and costs half as much time again.) There is no flush
/// to the disk. Returns true if it was done.
bool replaceFile(const std::filesystem::path& file, std::string_view text);

/// Like `replaceFile`, for a file that is rewritten all the time. A file system that guards a replaced file
/// against a power cut (ext4) starts writing it to the disk at each renaming and has the caller wait for
/// that; exchanging the two files spares it. After a power cut the file may be empty.
bool replaceTransientFile(const std::filesystem::path& file, std::string_view text);

// Both of these make one write, so that lines of two writers never mix, and take back what a full disk let
// through of it. Neither waits for a pipe or a device in the file's place. They return whether all of it was
// written.

/// Adds `bytes` at the end of an existing regular file.
bool appendToFile(const std::filesystem::path& file, std::string_view bytes);

/// Writes a file that does not exist yet.
bool createFile(const std::filesystem::path& file, std::string_view bytes);

}  // namespace purlock::host_linux
