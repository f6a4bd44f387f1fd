#include "tests/support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

#include "tests/support/wait_until.h"

namespace purlock::test {

namespace {

using Group = ChildOptions::Group;

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> found;
    for (const std::string& text : texts) found.push_back(const_cast<char*>(text.c_str()));
    found.push_back(nullptr);
    return found;
}

/// Between fork and exec: nothing but system calls.
[[noreturn]] void becomeProgram(char* const* arguments, char* const* environment, const ChildOptions& options,
                                pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(126);  // the parent died before the line above
    if (options.group == Group::own) ::setpgid(0, 0);
    ::dup2(::open("/dev/null", O_RDONLY), 0);
    if (!options.log.empty()) {
        const int output = ::open(options.log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        ::dup2(output, 1);
        ::dup2(output, 2);
    }
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        if (descriptor != options.keptDescriptor) ::close(descriptor);
    }
    ::execvpe(arguments[0], arguments, environment);
    ::_exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const Command& command, const Environment& environment,
                           const ChildOptions& options)
    : group_(options.group) {
    const auto arguments = pointers(command);
    const auto variables = pointers(environment);
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) becomeProgram(arguments.data(), variables.data(), options, parent);
    if (pid_ > 0 && group_ == Group::own) ::setpgid(pid_, pid_);  // both sides, whichever comes first
}

ChildProcess::~ChildProcess() {
    kill();
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)), group_(other.group_), exit_(std::exchange(other.exit_, {})) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this == &other) return *this;
    kill();
    pid_ = std::exchange(other.pid_, -1);
    group_ = other.group_;
    exit_ = std::exchange(other.exit_, {});
    return *this;
}

/// Until its end has been waited for, neither its id nor its group's can become somebody else's: so what is
/// left of the group is ended before.
bool ChildProcess::noteEnd(int waitFlags) {
    siginfo_t information{};
    if (::waitid(P_PID, static_cast<id_t>(pid_), &information, WEXITED | WNOWAIT | waitFlags) != 0 ||
        information.si_pid != pid_) {
        return false;
    }
    if (group_ == Group::own) ::kill(-pid_, SIGKILL);
    int status = 0;
    if (::waitpid(pid_, &status, 0) != pid_) return false;
    exit_ = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    return true;
}

bool ChildProcess::isRunning() {
    return pid_ > 0 && !exit_ && !noteEnd(WNOHANG);
}

void ChildProcess::signal(int number) const {
    if (pid_ > 0 && !exit_) ::kill(pid_, number);
}

void ChildProcess::pause() const {
    signal(SIGSTOP);
    siginfo_t stopped{};
    if (pid_ > 0 && !exit_) ::waitid(P_PID, static_cast<id_t>(pid_), &stopped, WSTOPPED | WEXITED | WNOWAIT);
}

void ChildProcess::resume() const {
    signal(SIGCONT);
}

void ChildProcess::kill() {
    if (!isRunning()) return;
    ::kill(pid_, SIGKILL);
    noteEnd(0);
}

std::optional<int> ChildProcess::waitForExit(std::chrono::milliseconds time) {
    waitUntil([this] { return !isRunning(); }, time);
    return exit_;
}

}  // namespace purlock::test
