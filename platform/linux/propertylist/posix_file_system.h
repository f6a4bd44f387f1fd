#pragma once

#include "source/file_system.h"

namespace purlock::host_linux {

/// The file system as the process sees it. Made by the host's start-up; any thread.
class PosixFileSystem final : public FileSystem {
  public:
    bool fileExistsAtPath(const std::string& path) override;

    /// $HOME, else the home folder of the user's account.
    std::optional<std::string> homeDirectory() override;
};

}  // namespace purlock::host_linux
