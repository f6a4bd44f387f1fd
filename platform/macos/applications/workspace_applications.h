#pragma once

#include "base/running_applications.h"

namespace purlock::host_macos {

/// The applications that the workspace knows. Any thread; what it tells is as old as the main run loop's last
/// turn.
class WorkspaceApplications final : public RunningApplications {
  public:
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override;
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        std::string_view bundleID) override;
};

}  // namespace purlock::host_macos
