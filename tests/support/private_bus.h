#pragma once

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace purlock::test {

/// A folder of the test's own, gone with its object.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "purlock-test-XXXXXX").string();
        if (mkdtemp(name.data()) != nullptr) path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// Writes a file below the folder, its parent folders included.
    void write(const std::string& relative, const std::string& text) const {
        std::filesystem::create_directories((path_ / relative).parent_path());
        std::ofstream(path_ / relative, std::ios::binary) << text;
    }

  private:
    std::filesystem::path path_;
};

/// Polls `condition` until it holds; false when it does not within `limit`.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// A program that the test started, and that ends with its object, by its process id.
class ChildProcess {
  public:
    /// Whether what the program starts in turn ends with it.
    enum class Group { shared, own };

    ChildProcess() = default;
    ChildProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                 Group group = Group::shared)
        : group_(group) {
        std::vector<char*> argumentPointers;
        std::vector<char*> environmentPointers;
        for (const auto& text : arguments) argumentPointers.push_back(const_cast<char*>(text.c_str()));
        for (const auto& text : environment) environmentPointers.push_back(const_cast<char*>(text.c_str()));
        argumentPointers.push_back(nullptr);
        environmentPointers.push_back(nullptr);
        pid_ = fork();
        if (pid_ > 0 && group == Group::own) setpgid(pid_, pid_);  // both sides, whichever comes first
        if (pid_ != 0) return;
        if (group == Group::own) setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // also when the test itself dies
        execvpe(argumentPointers[0], argumentPointers.data(), environmentPointers.data());
        _exit(127);
    }
    ~ChildProcess() { kill(SIGKILL); }
    ChildProcess(ChildProcess&& other) noexcept : pid_(std::exchange(other.pid_, -1)), group_(other.group_) {}
    ChildProcess& operator=(ChildProcess&& other) noexcept {
        std::swap(pid_, other.pid_);
        std::swap(group_, other.group_);
        return *this;
    }

    /// Ends the program and waits for its end.
    void kill(int signal) {
        if (pid_ <= 0) return;
        ::kill(group_ == Group::own ? -pid_ : pid_, signal);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

    void send(int signal) const {
        if (pid_ > 0) ::kill(pid_, signal);
    }

    bool isRunning() { return pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0; }
    pid_t pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
    Group group_ = Group::shared;
};

/// A dbus-daemon of the test's own, in a folder of its own, that lets everybody do everything.
class PrivateBus {
  public:
    PrivateBus() {
        folder_.write("bus.conf",
                      R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=)" + socket() +
                          R"(</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_message_size">134217728</limit>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
</busconfig>
)");
        start();
    }

    std::string socket() const { return (folder_.path() / "bus").string(); }
    std::string address() const { return "unix:path=" + socket(); }
    const TemporaryFolder& folder() const { return folder_; }

    /// Starts the daemon and waits until it listens, or restarts it after `kill`.
    bool start() {
        std::error_code ignored;
        std::filesystem::remove(socket(), ignored);
        daemon_ = ChildProcess({"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                                "--config-file=" + (folder_.path() / "bus.conf").string()},
                               {"PATH=/usr/bin:/bin", "HOME=/nonexistent"});
        return waitUntil([this] { return std::filesystem::exists(socket()); });
    }

    /// As a crash would end it: the socket's file stays behind.
    void kill() { daemon_.kill(SIGKILL); }

    /// Makes the daemon hang, and lets it go on.
    void pause() { daemon_.send(SIGSTOP); }
    void resume() { daemon_.send(SIGCONT); }

    pid_t pid() const { return daemon_.pid(); }

  private:
    TemporaryFolder folder_;
    ChildProcess daemon_;
};

}  // namespace purlock::test
