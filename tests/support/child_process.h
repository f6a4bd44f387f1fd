#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace purlock::test {

using Command = std::vector<std::string>;
using Environment = std::vector<std::string>;  // "NAME=value"

/// A program that a test has started. It dies with the thread that started it, whatever becomes of the test,
/// and at the latest when this is destroyed; no other process is ever touched.
class ChildProcess {
  public:
    ChildProcess() = default;

    /// Starts a program by its name in PATH; its output is appended to the file `log`, its input is empty.
    ChildProcess(const Command& command, const Environment& environment, const std::string& log);
    ~ChildProcess();
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }

    /// False once it has ended, or when it never began.
    bool isRunning();

    void signal(int number) const;

    /// Kills it, stopped or not, and waits for its end.
    void kill();

    /// The exit status when it ends in time; negative for the number of the signal that ended it.
    std::optional<int> waitForExit(std::chrono::milliseconds time);

  private:
    void noteEnd(int status);

    pid_t pid_ = -1;
    std::optional<int> exit_;
};

/// Asks again and again, with short pauses, until the answer is yes or the time is over; returns the last
/// answer.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds time = std::chrono::seconds(10));

/// The pause of `waitUntil`.
void pauseBriefly();

template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return condition();
        pauseBriefly();
    }
    return true;
}

}  // namespace purlock::test
