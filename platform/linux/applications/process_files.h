#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/applications/process_identity.h"

namespace purlock::host_linux {

/// Reads what the kernel tells of processes, below /proc or a folder like it. Reads are bounded, and wait for
/// a process only where a comment says so. A result is absent where the file cannot be read: the process is
/// gone, or belongs to another user. Any thread.
class ProcessFiles {
  public:
    explicit ProcessFiles(std::string folder = "/proc") : folder_(std::move(folder)) {}

    std::optional<ProcessStatus> status(std::int32_t pid) const;

    /// The text of its control groups.
    std::string controlGroups(std::int32_t pid) const;

    /// True if it sees other mounts than this process, as in a sandbox; not asked of its own file system.
    bool hasOwnMounts(std::int32_t pid) const;

    /// The text of its sandbox's description; absent outside a sandbox of Flatpak's. Read from the process's
    /// own root, which may be a file system that never answers: for a thread that may wait.
    std::optional<std::string> flatpakInfo(std::int32_t pid) const;

    /// The program file that it runs, as a path.
    std::optional<std::string> executable(std::int32_t pid) const;

    /// Its command line's words, at most 4 KiB of them. The kernel reads them from the process's own memory,
    /// which may lie in a file system that never answers: for a thread that may wait.
    std::vector<std::string> arguments(std::int32_t pid) const;

    /// The processes of this user, in the order of their ids; at most 65,536.
    std::vector<std::int32_t> processes() const;

  private:
    std::string pathOf(std::int32_t pid, const char* name) const;

    const std::string folder_;
};

}  // namespace purlock::host_linux
