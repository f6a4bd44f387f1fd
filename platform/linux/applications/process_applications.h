#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/running_applications.h"
#include "platform/linux/applications/desktop_index.h"
#include "platform/linux/applications/process_files.h"

namespace purlock::host_linux {

/// An application's instance and when it started, in clock ticks since boot.
using StartedApplication = std::pair<std::uint64_t, RunningApplication>;

/// Which application a process belongs to: `DesktopApplications` says by which rules. Some reads of /proc a
/// process; any thread.
class ProcessApplications {
  public:
    /// Facts that only the process itself tells. Reading them may take without end: its root may be a file
    /// system that hangs, and its command line lies in its own memory. They are absent while they are not
    /// known. Only a caller who may wait reads them at once.
    struct OwnWords {
        using Lookup = std::function<std::optional<std::string>(std::int32_t pid)>;
        Lookup sandbox;  // the application of its sandbox
        Lookup script;   // what an interpreter runs
    };

    ProcessApplications(const ProcessFiles& processes, std::shared_ptr<const DesktopIndex> index,
                        OwnWords ownWords)
        : processes_(processes), index_(std::move(index)), ownWords_(std::move(ownWords)) {}

    std::optional<RunningApplication> applicationOf(std::int32_t pid) const;

    /// In the order of their start. The topmost process of an application is its instance.
    std::vector<StartedApplication> instancesOf(std::string_view bundleID) const;

  private:
    std::optional<std::string> identify(std::int32_t pid) const;
    std::optional<std::string> identifyByParents(std::int32_t pid) const;
    std::optional<std::string> identifyByProgram(std::int32_t pid) const;
    bool isHelper(std::int32_t pid) const;
    std::optional<std::string> nameOf(const std::string& id) const;

    const ProcessFiles& processes_;
    const std::shared_ptr<const DesktopIndex> index_;
    const OwnWords ownWords_;
};

}  // namespace purlock::host_linux
