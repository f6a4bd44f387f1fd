#pragma once

#include <filesystem>
#include <optional>

#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

/// Held by the one instance that runs in a session. The system lets go of it when the process ends, however
/// it ends.
class InstanceLock {
  public:
    enum class Outcome {
        taken,
        heldByAnother,
        unavailable,  // the file cannot be made; nobody can say whether another instance runs
    };

    /// Tries to take the lock on `file`, which is made if it is missing and stays behind, empty.
    explicit InstanceLock(const std::filesystem::path& file);

    Outcome outcome() const { return outcome_; }

    /// Lets another instance start while this process is still ending: a disk that hangs may hold it up.
    void release();

  private:
    FileDescriptor file_;
    Outcome outcome_ = Outcome::unavailable;
};

}  // namespace purlock::host_linux
