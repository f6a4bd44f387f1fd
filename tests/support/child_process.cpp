#include "tests/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

namespace purlock::test {

namespace {

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> found;
    for (const std::string& text : texts) found.push_back(const_cast<char*>(text.c_str()));
    found.push_back(nullptr);
    return found;
}

/// Between fork and exec: nothing but system calls.
[[noreturn]] void becomeProgram(char* const* arguments, char* const* environment, const char* log,
                                pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(126);  // the parent died before the line above
    const int input = ::open("/dev/null", O_RDONLY);
    const int output = ::open(log, O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(input, 0);
    ::dup2(output, 1);
    ::dup2(output, 2);
    for (int descriptor = 3; descriptor < 256; ++descriptor) ::close(descriptor);
    ::execvpe(arguments[0], arguments, environment);
    ::_exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const Command& command, const Environment& environment, const std::string& log) {
    const auto arguments = pointers(command);
    const auto variables = pointers(environment);
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) becomeProgram(arguments.data(), variables.data(), log.c_str(), parent);
}

ChildProcess::~ChildProcess() {
    kill();
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)), exit_(std::exchange(other.exit_, {})) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this == &other) return *this;
    kill();
    pid_ = std::exchange(other.pid_, -1);
    exit_ = std::exchange(other.exit_, {});
    return *this;
}

void ChildProcess::noteEnd(int status) {
    exit_ = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

bool ChildProcess::isRunning() {
    if (pid_ <= 0 || exit_) return false;
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) != pid_) return true;
    noteEnd(status);
    return false;
}

void ChildProcess::signal(int number) const {
    if (pid_ > 0 && !exit_) ::kill(pid_, number);
}

void ChildProcess::kill() {
    if (!isRunning()) return;
    ::kill(pid_, SIGKILL);
    int status = 0;
    if (::waitpid(pid_, &status, 0) == pid_) noteEnd(status);
}

std::optional<int> ChildProcess::waitForExit(std::chrono::milliseconds time) {
    waitUntil([this] { return !isRunning(); }, time);
    return exit_;
}

void pauseBriefly() {
    ::poll(nullptr, 0, 5);
}

}  // namespace purlock::test
