#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>

#include "base/worker_pool.h"
#include "tests/host-linux/pipewire/hardware/audio_test.h"
#include "tests/support/sanitizers.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using test::AudioTest;
using test::waitUntil;

std::size_t entryCount(const char* folder) {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
    return count;
}

std::size_t threadCount() {
    return entryCount("/proc/self/task");
}

std::size_t descriptorCount() {
    return entryCount("/proc/self/fd");
}

/// Resident memory in KiB.
long residentMemory() {
    std::ifstream file("/proc/self/statm");
    long total = 0;
    long resident = 0;
    file >> total >> resident;
    return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

double processorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

class Recovery : public AudioTest {
  protected:
    /// The server and what depends on it die at once, as in a crash of the whole.
    void killServer() {
        for (const char* const name : {"player", "tunnel", "pipewire-pulse", "wireplumber", "pipewire"}) {
            session.process(name).kill();
        }
    }

    void startAll() {
        ASSERT_TRUE(session.startAudioServer()) << session.logs();
        ASSERT_TRUE(session.startSessionManager()) << session.logs();
        ASSERT_TRUE(session.startPulseServer()) << session.logs();
    }

    void playTone() {
        ASSERT_TRUE(session.startTunnelSink("tunnel", "S16LE", 48000)) << session.logs();
        session.spawn("player", {"pw-play", "--target", "tunnel", session.toneFile(44100)});
    }

    bool isPlayingRight() {
        const AudioObjectID device = observer().deviceByUID("tunnel");
        return device != 0 && observer().isRunning(device) && observer().virtualRate(device) == 44100 &&
               observer().physicalRate(device) == 48000 && observer().processes().size() == 1;
    }

    /// PURLOCK_RECOVERY_ROUNDS asks for more rounds than a quick test has.
    static int rounds() {
        const char* const text = std::getenv("PURLOCK_RECOVERY_ROUNDS");
        return text == nullptr ? 5 : std::atoi(text);
    }
};

TEST_F(Recovery, AServerThatIsKilledAgainAndAgainWhileATonePlays) {
    playTone();
    ASSERT_TRUE(waitUntil([&] { return isPlayingRight(); })) << session.logs();
    std::set<AudioObjectID> used;
    std::size_t threads = 0;
    std::size_t descriptors = 0;
    long memory = 0;
    for (int round = 0; round < rounds(); ++round) {
        SCOPED_TRACE(round);
        for (const AudioObjectID device : observer().devices()) {
            EXPECT_TRUE(used.insert(device).second) << device << " was an object of an earlier server";
        }
        killServer();
        ASSERT_TRUE(
            waitUntil([&] { return observer().devices().empty() && observer().processes().empty(); }, 2s));
        EXPECT_EQ(observer().defaultOutput(), 0U);
        startAll();
        ASSERT_TRUE(waitUntil([&] { return !observer().devices().empty(); }, 2s)) << session.logs();
        playTone();
        ASSERT_TRUE(waitUntil([&] { return isPlayingRight(); })) << session.logs();
        if (round == 1) {  // by now every cache is warm
            threads = threadCount();
            descriptors = descriptorCount();
            memory = residentMemory();
        }
    }
    expectAsDumped("tunnel");
    EXPECT_EQ(threadCount(), threads);
    EXPECT_LE(descriptorCount(), descriptors + 2) << "a listener to the clocks comes and goes";
    // The allocator of a sanitizer keeps what was freed, so that memory says nothing there.
    if (!test::isSanitized) {
        EXPECT_LT(residentMemory() - memory, 1024) << "KiB more than after the second round";
    }
    std::cout << "after " << rounds() << " rounds: " << threadCount() << " threads, " << descriptorCount()
              << " descriptors, " << residentMemory() - memory << " KiB more than after the second\n";
}

TEST_F(Recovery, ItIsThereWithinTwoSecondsOfTheServersReturn) {
    killServer();
    ASSERT_TRUE(waitUntil([&] { return observer().devices().empty(); }, 2s));
    startAll();
    ASSERT_TRUE(session.loadNullSink("null48", 48000));  // returns when pw-dump shows it
    EXPECT_TRUE(waitUntil([&] { return observer().deviceByUID("null48") != 0; }, 2s));
}

TEST_F(Recovery, AHungServerHoldsNobodyUpAndIsTakenForGone) {
    playTone();
    ASSERT_TRUE(waitUntil([&] { return isPlayingRight(); })) << session.logs();
    session.process("pipewire").pause();
    const auto slowest = [&] {
        const auto start = std::chrono::steady_clock::now();
        static_cast<void>(observer().devices());
        return std::chrono::steady_clock::now() - start;
    };
    EXPECT_LT(slowest(), 100ms);
    EXPECT_TRUE(waitUntil([&] { return observer().devices().empty(); }, 10s))
        << "readers ask whether it lives";
    session.process("pipewire").resume();
    EXPECT_TRUE(waitUntil([&] { return !observer().devices().empty(); }, 2s));
}

TEST_F(Recovery, AbsenceAndIdlenessCostNothing) {
    const auto cost = [] {
        const double before = processorSeconds();
        ::sleep(2);
        return processorSeconds() - before;
    };
    EXPECT_LT(cost(), 0.01) << "seconds of processor time in 2 s of an idle session";
    killServer();
    ASSERT_TRUE(waitUntil([&] { return observer().devices().empty(); }, 2s));
    EXPECT_LT(cost(), 0.02) << "the same without a server";
}

TEST(RecoveryFromNothing, AServerThatStartsLateIsFound) {
    test::PrivateSession session;
    test::NumberedApplications applications;
    host_linux::PipeWireHardware hardware(applications);
    const test::AudioObserver observer(hardware);
    EXPECT_TRUE(observer.devices().empty());
    EXPECT_EQ(observer.defaultOutput(), 0U);
    ASSERT_TRUE(session.startAudio()) << session.logs();
    EXPECT_TRUE(waitUntil([&] { return !observer.devices().empty() && observer.defaultOutput() != 0; }, 2s))
        << session.logs();
}

}  // namespace
}  // namespace purlock
