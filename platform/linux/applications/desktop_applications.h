#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/running_applications.h"
#include "base/serial_queue.h"
#include "platform/linux/applications/desktop_index.h"
#include "platform/linux/applications/desktop_locale.h"
#include "platform/linux/applications/process_files.h"

namespace purlock::host_linux {

/// Where this host looks for processes and desktop files, how often, and the language of the names that it
/// gives.
struct DesktopRoots {
    std::string processFolder = "/proc";
    std::vector<std::string> dataFolders = desktopDataFolders();
    std::string locale = messagesLocale();

    /// How long the desktop files that were read count as the present ones, before their folders are looked
    /// at.
    std::chrono::milliseconds keptIndexTime{10'000};

    /// How long the first answer for a process is kept: it may change its control group soon after its start.
    /// An answer that is found again is kept twice as long as before, up to the longest time.
    std::chrono::milliseconds keptProcessTime{5000};
    static constexpr std::chrono::milliseconds longestKeptProcessTime{40'000};

    /// How long an instance of an application counts as running, before /proc is asked again.
    std::chrono::milliseconds trustedInstanceTime{5000};

    std::function<std::chrono::steady_clock::time_point()> now = &std::chrono::steady_clock::now;
};

/// Processes and the desktop's applications.
///
/// A process's application is named, in this order, by its control group, by its sandbox, and by the desktop
/// files that name its program (or its script, when the program is an interpreter); a terminal's control
/// group does not name what runs inside it, and a desktop file that no menu shows names no program. When
/// nothing names the process itself, its parents are asked, a few levels up and only within the same session
/// and control group: a browser's audio process belongs to the browser, but a command-line player does not
/// belong to the terminal or the desktop shell that started it, and so belongs to no application.
///
/// Questions come from any thread and cost some reads of /proc. Work that may take long is done on `queue`,
/// and later questions have its result: the desktop files are read when this is made and when a folder has
/// changed; a process's own root and the command line of an interpreter, which may hang, are read once; all
/// processes are searched for the instances of an application. Until an interpreter's command line is known,
/// nothing is named by it. No mutex is held over a read. Owned by the host.
class DesktopApplications final : public RunningApplications {
  public:
    explicit DesktopApplications(std::shared_ptr<SerialQueue> queue, DesktopRoots roots = {});
    ~DesktopApplications() override;

    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override;

    /// The instances that the last search found and that still run, in the order of their start; none before
    /// the first search. The topmost process of an application is its instance.
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        std::string_view bundleID) override;

    /// The same for a thread that may wait: its question searches all processes at once.
    RunningApplications& searchingAtOnce();

    /// The name of the desktop file with that id; absent when there is none that a menu shows.
    std::optional<std::string> nameOfDesktopFile(std::string_view id);

    /// How long the answer is kept that nothing runs, and instances that still run.
    static constexpr std::chrono::seconds keptAbsenceTime{2};
    static constexpr std::chrono::seconds keptInstancesTime{30};

  private:
    class Desk;
    class Direct;

    const std::shared_ptr<Desk> desk_;  // what the queue shares with the questions, and outlives both
    const std::unique_ptr<Direct> direct_;
};

}  // namespace purlock::host_linux
