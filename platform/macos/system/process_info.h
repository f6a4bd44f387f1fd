#pragma once

#include <memory>

#include "base/operating_system.h"

namespace purlock::host_macos {

/// The version that the system tells this process. A process built with an old SDK may be told an older one.
class ProcessInfo final : public OperatingSystem {
  public:
    OperatingSystemVersion version() const override;
};

/// Keeps the system from putting the program to sleep for as long as this lives. A program without a window
/// that is seen gets its timers seconds late, or minutes (App Nap); the Mac itself may sleep as it likes.
class Activity {
  public:
    explicit Activity(const char* reason);
    ~Activity();
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

  private:
    struct Token;
    const std::unique_ptr<Token> token_;
};

}  // namespace purlock::host_macos
