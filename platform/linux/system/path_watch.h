#pragma once

#include <filesystem>

#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

/// Tells when something appears at a path, without looking there meanwhile: the nearest folder on the way to
/// it that exists is watched (inotify) for the next step.
///
/// Its owner waits for a server's socket and uses it on one thread, which waits for `descriptor` to become
/// readable and then calls `takeEvents`.
class PathWatch {
  public:
    /// Starts watching, or goes on to a nearer folder that exists by now. False, and nothing is told, if the
    /// path is not absolute or a folder cannot be watched.
    bool begin(const std::filesystem::path& path);

    void end();

    /// Negative before the first `begin` and after `end`; else the same as long as there is no `end`.
    int descriptor() const { return descriptor_.get(); }

    /// Takes what has happened; whether the path, or a step on the way to it, may have appeared. After that,
    /// `begin` again: the folder may have gone, or a nearer one come.
    bool takeEvents();

  private:
    void watch(int folder);

    FileDescriptor descriptor_;
    int folder_ = -1;  // the watched one, as the kernel numbers it
    std::filesystem::path step_;
};

}  // namespace purlock::host_linux
