#include "platform/linux/storage/instance_lock.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>

#include "tests/support/temporary_folder.h"

namespace purlock::host_linux {
namespace {

using Outcome = InstanceLock::Outcome;

TEST(InstanceLock, OneHolderAtATime) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "purlock.lock";
    std::optional<InstanceLock> first(file);
    EXPECT_EQ(first->outcome(), Outcome::taken);
    EXPECT_EQ(InstanceLock(file).outcome(), Outcome::heldByAnother);
    first.reset();
    EXPECT_EQ(InstanceLock(file).outcome(), Outcome::taken);
}

TEST(InstanceLock, AKilledHolderLetsGo) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "purlock.lock";
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const InstanceLock held(file);
        static_cast<void>(write(ready[1], "x", 1) == 1);
        for (;;) pause();
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(InstanceLock(file).outcome(), Outcome::heldByAnother);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(InstanceLock(file).outcome(), Outcome::taken);
    close(ready[0]);
    close(ready[1]);
}

TEST(InstanceLock, AReleasedOneIsForTheNext) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "purlock.lock";
    InstanceLock first(file);
    InstanceLock second(file);
    second.release();
    EXPECT_EQ(InstanceLock(file).outcome(), Outcome::heldByAnother) << "only its holder can";
    first.release();
    EXPECT_EQ(InstanceLock(file).outcome(), Outcome::taken);
}

TEST(InstanceLock, WithoutAFolderItIsUnavailable) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(InstanceLock(folder.path() / "missing" / "purlock.lock").outcome(), Outcome::unavailable);
}

}  // namespace
}  // namespace purlock::host_linux
