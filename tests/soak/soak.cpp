// soak <minutes> [<seed>]: random events in a session of real parts, one after the other as fast as the
// program settles after each. It checks throughout that state.json agrees with the session and with the
// server's dump, that both files are whole, and that memory, threads and descriptors stay as they were after
// the first fifth.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>

#include "bench/process_cost.h"
#include "tests/soak/soak_session.h"

namespace {

using namespace purlock;
using Clock = std::chrono::steady_clock;

// In KiB of its own memory; opening the panel for the first time comes before.
constexpr long allowedGrowth = 2048;
// Of threads and descriptors, which come and go with what happens.
constexpr long allowedMore = 3;

struct Measure {
    long anonymous = 0;
    long resident = 0;
    long threads = 0;
    long descriptors = 0;
};

long entriesOf(const std::string& folder) {
    std::error_code ignored;
    const auto entries = std::filesystem::directory_iterator(folder, ignored);
    return static_cast<long>(std::distance(begin(entries), end(entries)));
}

std::optional<Measure> measure(pid_t pid) {
    const auto memory = bench::memoryOf(pid);
    if (!memory) return std::nullopt;
    const std::string process = "/proc/" + std::to_string(pid);
    return Measure{memory->anonymous, memory->resident, entriesOf(process + "/task"),
                   entriesOf(process + "/fd")};
}

void print(const char* when, int events, const Measure& now) {
    std::printf("%-12s %6d events  %6ld KiB resident  %6ld KiB own  %3ld threads  %3ld descriptors\n", when,
                events, now.resident, now.anonymous, now.threads, now.descriptors);
    std::fflush(stdout);
}

int fail(soak::SoakSession& session, const std::string& why) {
    std::fprintf(stderr, "%s\n%s\n", why.c_str(), session.logs().c_str());
    return EXIT_FAILURE;
}

int run(std::chrono::seconds duration, unsigned seed) {
    soak::SoakSession session(seed);
    if (!session.start()) return fail(session, "The session did not start: " + session.disagreement());
    const auto start = Clock::now();
    auto nextReport = start;
    std::optional<Measure> first;
    int events = 0;
    while (Clock::now() - start < duration) {
        const std::string event = session.happen();
        ++events;
        const std::string problem = session.disagreement();
        if (!problem.empty()) {
            return fail(session, "After event " + std::to_string(events) + " (" + event + "): " + problem);
        }
        const auto now = measure(session.program().process().pid());
        if (!now) return fail(session, "Purlock has ended after: " + event);
        if (!first && Clock::now() - start > duration / 5) print("baseline", events, *(first = now));
        if (Clock::now() >= nextReport) {
            print("", events, *now);
            nextReport += std::chrono::minutes(1);
        }
    }
    const auto last = measure(session.program().process().pid());
    if (!first || !last) return fail(session, "Purlock has ended");
    print("end", events, *last);
    const bool flat = last->anonymous - first->anonymous <= allowedGrowth &&
                      last->threads - first->threads <= allowedMore &&
                      last->descriptors - first->descriptors <= allowedMore;
    const std::string console = session.program().console();
    if (!flat) return fail(session, "Something grew.");
    if (!console.empty()) return fail(session, "Purlock said: " + console);
    std::puts("Everything agreed throughout, and nothing grew.");
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    const int minutes = argc > 1 ? std::atoi(argv[1]) : 0;
    if (minutes <= 0) {
        std::fputs("usage: soak <minutes> [<seed>]\n", stderr);
        return EXIT_FAILURE;
    }
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 20261121;
    return run(std::chrono::minutes(minutes), seed);
}
