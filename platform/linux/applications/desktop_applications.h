#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/running_applications.h"
#include "base/serial_queue.h"
#include "platform/linux/applications/desktop_index.h"
#include "platform/linux/applications/desktop_locale.h"
#include "platform/linux/applications/process_files.h"

namespace purlock::host_linux {

/// Where this host looks for processes and desktop files, and the language of the names that it gives.
struct DesktopRoots {
    std::string processFolder = "/proc";
    std::vector<std::string> dataFolders = desktopDataFolders();
    std::string locale = messagesLocale();

    /// How long the desktop files that were read count as the present ones, before their folders are looked
    /// at.
    std::chrono::milliseconds keptIndexTime{3000};

    /// How long a process that was seen counts as the one that has its number, before /proc is asked again.
    /// Numbers of ended processes come up again only after thousands of others.
    std::chrono::milliseconds trustedProcessTime{2000};
};

/// Processes and the desktop's applications.
///
/// A process's application is named, in this order, by its sandbox, by its control group, and by the desktop
/// files that name its program (or its script, when the program is an interpreter); a terminal's control
/// group does not name what runs inside it. When nothing names the process itself, its parents are asked, a
/// few levels up and only within the same session and control group: a browser's audio process belongs to the
/// browser, but a command-line player does not belong to the terminal or the desktop shell that started it,
/// and so belongs to no application.
///
/// The desktop files are read on `queue`, first when this is made, then again when a question finds that a
/// folder has changed; until they are read, only sandboxes and control groups name applications, and names
/// are absent. Questions come from any thread and cost some reads of /proc. Owned by the host.
class DesktopApplications final : public RunningApplications {
  public:
    explicit DesktopApplications(std::shared_ptr<SerialQueue> queue, DesktopRoots roots = {});

    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override;

    /// In the order of their start. Of an application's processes the topmost is the instance.
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        std::string_view bundleID) override;

    /// How long an answer is kept.
    static constexpr std::chrono::seconds keptProcessTime{5};
    static constexpr std::chrono::seconds keptInstancesTime{2};

  private:
    using Moment = std::chrono::steady_clock::time_point;

    /// What the queue shares with the questions, and outlives both.
    struct Desktop {
        std::mutex mutex;
        std::shared_ptr<const DesktopIndex> index = std::make_shared<DesktopIndex>();  // guarded by mutex
        bool reading = false;                                                          // guarded by mutex
        Moment checked{};                                                              // guarded by mutex
    };

    /// Answers are asked for again and again while something plays, and each costs several reads of /proc; so
    /// they are kept for a moment, each as long as its processes are the same ones. A process may change its
    /// control group soon after its start, and an application may start at any time: hence no longer.
    struct KeptProcess {
        std::optional<RunningApplication> application;
        std::uint64_t startTime = 0;
        Moment asked;
        Moment seen;
    };
    struct KeptInstances {
        std::vector<std::pair<std::uint64_t, RunningApplication>> instances;  // each with its start time
        Moment asked;
        Moment seen;
    };
    struct Kept {
        std::mutex mutex;
        std::shared_ptr<const DesktopIndex> index;  // that all answers come from
        std::map<std::int32_t, KeptProcess> processes;
        std::map<std::string, KeptInstances, std::less<>> applications;
    };

    std::optional<RunningApplication> findApplication(std::int32_t pid, const DesktopIndex& index) const;
    std::vector<std::pair<std::uint64_t, RunningApplication>> findInstances(std::string_view bundleID,
                                                                            const DesktopIndex& index) const;
    void forgetOld(const std::shared_ptr<const DesktopIndex>& index, Moment now);
    bool stillRun(KeptInstances& kept, Moment now) const;
    std::shared_ptr<const DesktopIndex> currentIndex();
    void readAgain();
    std::optional<std::string> identify(std::int32_t pid, const DesktopIndex& index) const;
    std::optional<std::string> identifyByParents(std::int32_t pid, const DesktopIndex& index) const;
    std::optional<std::string> identifyByProgram(std::int32_t pid, const DesktopIndex& index) const;

    const std::shared_ptr<SerialQueue> queue_;
    const DesktopRoots roots_;
    const ProcessFiles processes_;
    const std::shared_ptr<Desktop> desktop_ = std::make_shared<Desktop>();
    Kept kept_;
};

}  // namespace purlock::host_linux
