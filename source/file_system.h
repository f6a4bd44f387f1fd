#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace purlock {

/// The two questions that the introspectors ask of the file system. Owned by the host; any thread.
class FileSystem {
  public:
    FileSystem() = default;
    virtual ~FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    /// True if the path leads to a file or folder, symbolic links followed.
    virtual bool fileExistsAtPath(const std::string& path) = 0;

    /// The user's home folder, without a slash at its end; absent when it is not known.
    virtual std::optional<std::string> homeDirectory() = 0;
};

/// `path` with a leading "~" (alone or before a slash) replaced by the home folder; unchanged where there is
/// none.
std::string stringByExpandingTildeInPath(FileSystem& files, std::string_view path);

}  // namespace purlock
