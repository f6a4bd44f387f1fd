#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/running_applications.h"

namespace purlock::test {

/// The applications that a test says are running, in its order. Any thread.
class FakeRunningApplications final : public RunningApplications {
  public:
    void setRunning(std::vector<RunningApplication> running) {
        const std::lock_guard lock(mutex_);
        running_ = std::move(running);
    }

    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override {
        const std::lock_guard lock(mutex_);
        askedProcesses_.push_back(pid);
        for (const RunningApplication& application : running_) {
            if (application.processIdentifier == pid) return application;
        }
        return std::nullopt;
    }

    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        std::string_view bundleID) override {
        const std::lock_guard lock(mutex_);
        std::vector<RunningApplication> found;
        for (const RunningApplication& application : running_) {
            if (application.bundleIdentifier == bundleID) found.push_back(application);
        }
        return found;
    }

    /// The process identifiers that were asked for, in order.
    std::vector<std::int32_t> askedProcesses() const {
        const std::lock_guard lock(mutex_);
        return askedProcesses_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<RunningApplication> running_;
    std::vector<std::int32_t> askedProcesses_;
};

}  // namespace purlock::test
