#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace purlock::test {

using Command = std::vector<std::string>;
using Environment = std::vector<std::string>;  // "NAME=value"

/// How a program that a test starts is bound to the test.
struct ChildOptions {
    /// The programs that this one starts end with it (`own`), or do not (`shared`).
    enum class Group { shared, own };

    std::string log = {};  // the file that its output is appended to; empty for the test's own output
    Group group = Group::shared;
    int keptDescriptor = -1;  // besides input and output, the only one that it inherits
};

/// A program that a test has started. It dies with the thread that started it, whatever becomes of the test,
/// and at the latest when this is destroyed; no other process but those of its own group is ever touched.
class ChildProcess {
  public:
    ChildProcess() = default;

    /// Starts a program by its name in PATH; its input is empty.
    ChildProcess(const Command& command, const Environment& environment, const ChildOptions& options = {});
    ~ChildProcess();
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Kept after its end.
    pid_t pid() const { return pid_; }

    /// False once it has ended, or when it never began.
    bool isRunning();

    void signal(int number) const;

    /// Makes it hang; when this returns, all of its threads do. `resume` lets it go on.
    void pause() const;
    void resume() const;

    /// Kills it, stopped or not, and waits for its end.
    void kill();

    /// The exit status when it ends in time; negative for the number of the signal that ended it.
    std::optional<int> waitForExit(std::chrono::milliseconds time);

  private:
    bool noteEnd(int waitFlags);

    pid_t pid_ = -1;
    ChildOptions::Group group_ = ChildOptions::Group::shared;
    std::optional<int> exit_;
};

}  // namespace purlock::test
