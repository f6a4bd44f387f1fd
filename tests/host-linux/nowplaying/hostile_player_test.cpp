#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/linux/system/unused_memory.h"
#include "tests/host-linux/nowplaying/now_playing_session.h"
#include "tests/host-linux/nowplaying/scripted_player.h"
#include "tests/support/private_bus.h"
#include "tests/support/sanitizers.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using test::ChildProcess;
using test::NowPlayingSession;

/// Resident memory of this process in KiB: now, or the most there ever was.
long residentKiB(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(field + ":")) return std::stol(line.substr(field.size() + 1));
    }
    return 0;
}

/// What is allocated and not freed, in KiB; the allocator keeps more than that for later.
long allocatedKiB() {
    const auto info = mallinfo2();
    return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
}

/// Seconds of hostility: some, or as many as the environment says.
int duration() {
    const char* variable = std::getenv("PURLOCK_HOSTILE_SECONDS");
    return variable != nullptr ? std::atoi(variable) : 6;
}

/// Beyond being slower, a sanitizer copies sd-bus's buffer for a message at each read of it, so that an
/// enormous text of 100 MB takes a minute.
using test::isSanitized;

TEST(HostilePlayers, HarmNothingAndDelayNobody) {
    keepFreeMemorySmall();  // as the program does
    test::PrivateBus bus;
    NowPlayingSession session(bus.address());
    test::ScriptedPlayer honest(bus.address(), {"honest"});
    honest.tellTrack({"Song", {"Singer"}, "Record", 60'000'000});
    const auto showsSong = [&] { return session.info() && session.info()->title == "Song"; };
    ASSERT_TRUE(session.turnUntil(showsSong));
    const long before = residentKiB("VmRSS");
    const long usedBefore = allocatedKiB();

    const std::string seconds = std::to_string(duration());
    const std::string program = PURLOCK_HOSTILE_PLAYER;
    const std::string enormous = isSanitized ? "1000000" : "100000000";
    ChildProcess first({program, bus.address(), seconds, "1", enormous}, {});
    ChildProcess second({program, bus.address(), seconds, "2", enormous}, {});
    int fetches = 0;
    auto nextRefresh = NowPlayingSession::Clock::now();
    const auto refreshRegularly = [&] {  // as the program's own timer does
        if (NowPlayingSession::Clock::now() < nextRefresh) return;
        session.refresh();
        ++fetches;
        nextRefresh += 800ms;
    };
    EXPECT_TRUE(session.turnUntil(
        [&] {
            refreshRegularly();
            return !first.isRunning() && !second.isRunning();
        },
        std::chrono::seconds(duration() + 60)));

    // Afterwards the honest player is heard, also when the bus dropped what it told behind all that was
    // queued.
    honest.tellTrack({"Last", {}, "", 0});
    honest.tellStatus("Playing");
    EXPECT_TRUE(session.turnUntil(
        [&] {
            refreshRegularly();
            return session.info() && session.info()->title == "Last";
        },
        isSanitized ? 90s : 30s));

    // An enormous message may still be on its way.
    constexpr long mostKept = 1024;
    session.turnUntil([&] { return isSanitized || allocatedKiB() - usedBefore < mostKept; });
    constexpr long mostResident = 4 * 1024;
    session.turnUntil([&] { return isSanitized || residentKiB("VmRSS") - before < mostResident; });
    const long grown = residentKiB("VmRSS") - before;
    const long kept = allocatedKiB() - usedBefore;
    const double longestTurn = std::chrono::duration<double, std::milli>(session.longestTurn()).count();
    std::printf(
        "hostile for %s s: memory in use grew by %ld KiB, resident by %ld KiB, peak %ld KiB, longest turn of the main loop %.2f ms, %d fetches, %d publications\n",
        seconds.c_str(), kept, grown, residentKiB("VmHWM"), longestTurn, fetches, session.publications());
    EXPECT_GT(session.publications(), fetches);
    if (isSanitized) return;
    EXPECT_LT(kept, mostKept);
    EXPECT_LT(grown, mostResident);
    EXPECT_LT(longestTurn, 20.0);
}

}  // namespace
}  // namespace purlock::host_linux
