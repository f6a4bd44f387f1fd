#include "platform/linux/dbus/bus_thread.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace purlock::host_linux {
namespace {

/// In a process of its own, for a user who may have no further thread.
[[noreturn]] void useALifelessThread() {
    const rlimit one{1, 1};
    setrlimit(RLIMIT_NPROC, &one);
    const auto anotherUser = static_cast<uid_t>(1'000'000 + ::getpid());
    if (::geteuid() == 0 && ::setuid(anotherUser) != 0) std::_Exit(2);

    bool isDropped = true;
    bool hasRun = false;
    {
        BusThread thread;
        isDropped = thread.isLifeless();
        OnBusThread<int> object(thread, [&] {
            isDropped = false;
            return std::make_unique<int>(0);
        });
        thread.post([&] { isDropped = false; });
        thread.runAndWait([&] { hasRun = true; });
    }
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    const bool hearsSignals = sigismember(&blocked, SIGTERM) == 0;
    std::_Exit(isDropped && hasRun && hearsSignals ? 0 : 1);
}

TEST(BusThread, IsLifelessWhereTheSystemRefusesTheThread) {
    EXPECT_EXIT(useALifelessThread(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace purlock::host_linux
