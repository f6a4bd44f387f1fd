#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace purlock {

/// An application that runs now, as the desktop knows it.
struct RunningApplication {
    std::int32_t processIdentifier = 0;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;

    bool operator==(const RunningApplication&) const = default;
};

/// From processes to applications and back. Owned by the host; any thread; never blocks for long.
class RunningApplications {
  public:
    RunningApplications() = default;
    virtual ~RunningApplications() = default;
    RunningApplications(const RunningApplications&) = delete;
    RunningApplications& operator=(const RunningApplications&) = delete;

    /// The application to which the process belongs; absent when there is none.
    virtual std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) = 0;

    /// The running instances of an application, in a stable order; empty when there is none.
    virtual std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        std::string_view bundleID) = 0;
};

}  // namespace purlock
