#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/host-linux/program/program_test.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/virtual_display.h"

namespace purlock {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::waitUntil;

/// Where the program finds itself: with a session bus and an audio server, or without.
struct Surroundings {
    const char* name;
    bool hasBus;
    bool hasServer;
};

class InSurroundings : public test::ProgramTest, public testing::WithParamInterface<Surroundings> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(!GetParam().hasBus || session.startBus()) << session.logs();
        ASSERT_TRUE(!GetParam().hasServer || session.startAudioServer()) << session.logs();
    }
};

TEST_P(InSurroundings, SaysNothingAndEndsWhenAsked) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(strsignal(signal));
        std::filesystem::remove_all(program.folder());
        program.start();
        ASSERT_TRUE(waitUntil([&] { return program.snapshot().is_object(); }));
        const std::string first = test::contentsOf(program.stateFile());
        EXPECT_TRUE(waitUntil([&] { return test::contentsOf(program.stateFile()) != first; }, 5s))
            << "the timer rewrites the snapshot, with a time of its own";
        program.process().signal(signal);
        EXPECT_EQ(program.process().waitForExit(2s), 0);
        EXPECT_EQ(program.faults(), "");
        EXPECT_EQ(program.console(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, InSurroundings,
                         testing::Values(Surroundings{"NothingAtAll", false, false},
                                         Surroundings{"BusAlone", true, false},
                                         Surroundings{"ServerAlone", false, true},
                                         Surroundings{"BusAndServer", true, true}),
                         [](const auto& each) { return std::string(each.param.name); });

class Lifecycle : public test::ProgramTest {};

TEST_F(Lifecycle, WithoutAServerThereIsNoDeviceAndNoLog) {
    program.start();
    EXPECT_TRUE(program.awaitVerdict("noDevice"));
    program.process().signal(SIGTERM);
    EXPECT_EQ(program.process().waitForExit(2s), 0);
    EXPECT_TRUE(program.log().empty());
}

TEST_F(Lifecycle, ASessionBusThatHangsHoldsNothingUp) {
    const test::VirtualDisplay display;  // only on a real one does the toolkit ask the bus
    session.setVariable("DISPLAY", display.name());
    ASSERT_TRUE(session.startBus()) << session.logs();
    session.process("dbus-daemon").pause();
    session.spawn("purlock", {"env", "-u", "QT_QPA_PLATFORM", PURLOCK_PROGRAM});
    EXPECT_TRUE(program.awaitVerdict("noDevice"));
    program.process().signal(SIGTERM);
    EXPECT_EQ(program.process().waitForExit(5s), 0);
    EXPECT_EQ(program.console(), "");
}

TEST_F(Lifecycle, ASignalRightAfterTheStartLosesNothing) {
    for (int milliseconds = 0; milliseconds < 60; milliseconds += 3) {
        SCOPED_TRACE(milliseconds);
        program.start();
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (std::chrono::steady_clock::now() < end) continue;
        program.process().signal(SIGTERM);
        const auto status = program.process().waitForExit(2s);
        ASSERT_TRUE(status);
        EXPECT_TRUE(*status == 0 || *status == -SIGTERM) << *status;  // before it could listen to signals
        EXPECT_EQ(program.faults(), "");
    }
    EXPECT_EQ(program.console(), "");
}

TEST_F(Lifecycle, ASecondInstanceLeavesTheFirstAlone) {
    program.start();
    ASSERT_TRUE(program.awaitVerdict("noDevice"));
    const auto second = session.run({PURLOCK_PROGRAM});
    EXPECT_EQ(second.exitStatus, 0);
    EXPECT_EQ(second.output, "Purlock is already running in this session.\n");
    EXPECT_TRUE(program.isRunning());
    std::filesystem::remove(program.stateFile());
    EXPECT_TRUE(program.awaitVerdict("noDevice")) << "the first goes on";
    program.process().kill();
    program.start();
    std::filesystem::remove(program.stateFile());
    EXPECT_TRUE(program.awaitVerdict("noDevice")) << "a killed instance is in nobody's way";
}

TEST_F(Lifecycle, ASecondStartReachesTheFirstOverTheBus) {
    ASSERT_TRUE(session.startBus()) << session.logs();
    program.start();
    ASSERT_TRUE(program.awaitVerdict("noDevice"));
    for (const std::string what : {"opened", "closed", "opened"}) {
        SCOPED_TRACE(what);
        const auto second = session.run({PURLOCK_PROGRAM});
        EXPECT_EQ(second.exitStatus, 0);
        EXPECT_EQ(second.output, "Purlock is already running in this session: its panel was " + what + ".\n");
    }
    EXPECT_TRUE(program.isRunning());
    EXPECT_EQ(program.console(), "");
}

struct DeadDisplay {
    const char* name;
    std::vector<std::string> variables;
    const char* words;  // what the program has to say
};

class AtADeadDisplay : public Lifecycle, public testing::WithParamInterface<DeadDisplay> {};

TEST_P(AtADeadDisplay, ItSaysSoAndRunsWithoutAScreen) {
    test::Command command{"env", "-u", "QT_QPA_PLATFORM", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY"};
    command.insert(command.end(), GetParam().variables.begin(), GetParam().variables.end());
    command.push_back(PURLOCK_PROGRAM);
    session.spawn("purlock", command);
    EXPECT_TRUE(program.awaitVerdict("noDevice"));
    EXPECT_EQ(program.console(),
              std::string(GetParam().words) + "purlock: It runs without a screen and writes its files.\n");
    program.process().signal(SIGTERM);
    EXPECT_EQ(program.process().waitForExit(5s), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, AtADeadDisplay,
    testing::Values(
        DeadDisplay{"X",
                    {"DISPLAY=:987"},
                    "purlock: the display :987 of $DISPLAY does not answer, or is not yours.\n"},
        DeadDisplay{
            "Wayland",
            {"WAYLAND_DISPLAY=wayland-987"},
            "purlock: the display wayland-987 of $WAYLAND_DISPLAY does not answer, or is not yours.\n"},
        DeadDisplay{
            "Both",
            {"DISPLAY=:987", "WAYLAND_DISPLAY=/nonexistent/wayland"},
            "purlock: the display :987 of $DISPLAY does not answer, or is not yours.\n"
            "purlock: the display /nonexistent/wayland of $WAYLAND_DISPLAY does not answer, or is not yours.\n"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_F(Lifecycle, WithoutARuntimeFolderItRunsOnceAllTheSame) {
    session.spawn("purlock", {"env", "-u", "XDG_RUNTIME_DIR", PURLOCK_PROGRAM});
    EXPECT_TRUE(program.awaitVerdict("noDevice"));
    const auto second = session.run({"env", "-u", "XDG_RUNTIME_DIR", PURLOCK_PROGRAM});
    EXPECT_EQ(second.exitStatus, 0);
    EXPECT_EQ(second.output, "Purlock is already running in this session.\n");
    EXPECT_EQ(program.console(), "");
}

/// The program for another user, in a folder that anybody may use; it may stand where only root can go.
class AsAnotherUser : public Lifecycle {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
        fs::permissions(open_.path(), fs::perms(0777));
        fs::copy_file(PURLOCK_PROGRAM, copy());
        fs::permissions(copy(), fs::perms(0755));
    }

    fs::path copy() const { return open_.path() / "purlock"; }
    fs::path stateFile() const { return open_.path() / "data/Purlock/state.json"; }

    const test::TemporaryFolder open_;
};

TEST_F(AsAnotherUser, WithoutAnyFolderForDataItStopsAndSaysWhy) {
    const auto result = session.run({"setpriv", "--reuid=54321", "--clear-groups", "env", "-u", "HOME", "-u",
                                     "XDG_DATA_HOME", "-u", "XDG_RUNTIME_DIR", copy().string()});
    EXPECT_EQ(result.exitStatus, -SIGABRT);
    EXPECT_EQ(result.output,
              "purlock: there is no folder for application data: the home folder is not known\n");
}

TEST_F(AsAnotherUser, WithoutThreadsItRunsAndWritesOnceThereAreSome) {
    // A user of the test's own: the limit counts all threads of a user.
    const auto number = static_cast<uid_t>(1'000'000 + ::getpid());
    const std::string user = "--reuid=" + std::to_string(number);
    const std::string folder = open_.path().string();
    fs::permissions(open_.path(), fs::perms(0700));
    ASSERT_EQ(::chown(folder.c_str(), number, 0), 0);
    session.setVariable("ASAN_OPTIONS", "detect_leaks=0");  // the search for leaks is a thread, too
    session.spawn("purlock", {"prlimit", "--nproc=1:64", "setpriv", user, "--clear-groups", "env",
                              "HOME=" + folder, "XDG_DATA_HOME=" + folder + "/data",
                              "XDG_CONFIG_HOME=" + folder, "XDG_RUNTIME_DIR=" + folder, copy().string()});
    ASSERT_TRUE(waitUntil([&] { return !program.console().empty(); }));
    EXPECT_FALSE(waitUntil([&] { return !program.isRunning() || fs::exists(stateFile()); }, 1700ms))
        << "it neither ends nor finds a thread to write with";
    const std::string process = std::to_string(program.process().pid());
    session.run({"setpriv", user, "--clear-groups", "prlimit", "--pid", process, "--nproc=64:64"});
    EXPECT_TRUE(waitUntil([&] { return fs::exists(stateFile()); }));
    program.process().signal(SIGTERM);
    EXPECT_EQ(program.process().waitForExit(5s), 0);
    EXPECT_EQ(program.console(),
              "The system gives no thread for D-Bus; players, badges and Bluetooth are not seen.\n");
}

}  // namespace
}  // namespace purlock
