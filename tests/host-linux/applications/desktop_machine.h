#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/applications/desktop_applications.h"
#include "tests/support/manual_queues.h"
#include "tests/support/temporary_folder.h"

namespace purlock::test {

/// A machine with processes and desktop files that the test writes down.
class DesktopMachine : public ::testing::Test {
  protected:
    struct Process {
        std::int32_t pid = 0;
        std::int32_t parent = 1;
        std::int32_t session = 0;
        std::uint64_t startTime = 0;
        std::string program = {};
        std::string unit = "session-2.scope";
        std::string flatpak = {};
        std::string commandLine = {};
    };

    void add(const Process& process) {
        const std::string folder = "proc/" + std::to_string(process.pid) + "/";
        machine_.write(folder + "stat",
                       std::to_string(process.pid) + " (x) S " + std::to_string(process.parent) + " 1 " +
                           std::to_string(process.session) + " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 " +
                           std::to_string(process.startTime) + " 0\n");
        machine_.write(folder + "cgroup", "0::/user.slice/" + process.unit + "\n");
        if (!process.commandLine.empty()) machine_.write(folder + "cmdline", process.commandLine);
        if (!process.program.empty()) {
            std::filesystem::create_symlink(process.program, machine_.path() / (folder + "exe"));
        }
        if (!process.flatpak.empty()) {
            machine_.write(folder + "root/.flatpak-info", "[Application]\nname=" + process.flatpak + "\n");
            std::filesystem::create_directories(machine_.path() / (folder + "ns"));
            std::filesystem::create_symlink("mnt:[4026531999]", machine_.path() / (folder + "ns/mnt"));
        }
    }

    void addDesktopFile(const std::string& path, const std::string& name, const std::string& command,
                        const std::string& more = "") {
        machine_.write(path,
                       "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + command + "\n" + more);
    }

    /// The subject, with the desktop files read.
    host_linux::DesktopApplications& applications() {
        if (!applications_) {
            applications_ = std::make_unique<host_linux::DesktopApplications>(
                queue_, host_linux::DesktopRoots{
                            (machine_.path() / "proc").string(),
                            {(machine_.path() / "home").string(), (machine_.path() / "usr").string()},
                            "de_DE.UTF-8",
                            keptIndexTime_,
                            keptProcessTime_,
                            trustedInstanceTime_,
                            [this] { return now_; }});
            queue_->run();
        }
        return *applications_;
    }

    std::optional<RunningApplication> of(std::int32_t pid) {
        return applications().runningApplicationWithProcessIdentifier(pid);
    }

    /// What is known once the queue has done what the question asked for.
    std::optional<RunningApplication> later(std::int32_t pid) {
        of(pid);
        queue_->run();
        return of(pid);
    }
    std::vector<RunningApplication> instancesLater(std::string_view bundleID) {
        applications().runningApplicationsWithBundleIdentifier(bundleID);
        queue_->run();
        return applications().runningApplicationsWithBundleIdentifier(bundleID);
    }

    static std::optional<RunningApplication> application(std::int32_t pid, const char* id, const char* name) {
        return RunningApplication{pid, id, name != nullptr ? std::optional<std::string>(name) : std::nullopt};
    }

    const TemporaryFolder machine_;
    const std::shared_ptr<ManualSerialQueue> queue_ = std::make_shared<ManualSerialQueue>("desktop");
    std::chrono::milliseconds keptIndexTime_{0};        // every question looks at the folders
    std::chrono::milliseconds keptProcessTime_{0};      // and at the process
    std::chrono::milliseconds trustedInstanceTime_{0};  // and at the instances
    std::chrono::steady_clock::time_point now_{std::chrono::hours(1)};
    std::unique_ptr<host_linux::DesktopApplications> applications_;
};

}  // namespace purlock::test
