#include <algorithm>
#include <array>
#include <random>

#include "tests/host-linux/program/program_test.h"

namespace purlock {
namespace {

using test::signatureOf;
using test::waitUntil;

struct Sink {
    const char* name;
    int rate;
    int bits;
};
constexpr std::array sinks = {Sink{"null48", 48000, 32}, Sink{"null44", 44100, 32},
                              Sink{"narrow", 48000, 16}};

/// What the test has told the session to be, and what a listener should therefore be told.
struct Session {
    std::size_t sink = 0;
    int stream = 0;  // Hz, 0 while nothing plays
    int clock = 48000;

    std::string signature() const {
        const Sink& device = sinks[sink];
        const int near = stream == 0 ? device.rate : clock != device.rate ? clock : stream;
        const std::string depth = "/" + std::to_string(device.bits);
        return std::string(device.name) + (stream != 0 ? "|true|" : "|false|") + std::to_string(near) +
               depth + "|" + std::to_string(device.rate) + depth;
    }
};

class Log : public test::ProgramWithSoundTest {
  protected:
    void SetUp() override {
        ProgramWithSoundTest::SetUp();
        ASSERT_TRUE(session.loadNullSink("null44", 44100));
        ASSERT_TRUE(session.startTunnelSink("narrow", "S16LE", 48000));
        ASSERT_TRUE(session.setDefaultSink("null48"));
    }

    void change(Session& now) {
        constexpr std::array streams = {44100, 48000, 96000};
        constexpr std::array clocks = {44100, 48000, 96000};
        const auto any = [&](const auto& values) { return values[random_() % values.size()]; };
        switch (random_() % 3) {
            case 0:
                now.sink = random_() % sinks.size();
                ASSERT_TRUE(session.setDefaultSink(sinks[now.sink].name));
                break;
            case 1:
                stopPlaying();
                now.stream = now.stream != 0 ? 0 : any(streams);
                if (now.stream != 0) play(now.stream);
                break;
            default:
                now.clock = any(clocks);
                ASSERT_TRUE(session.forceClockRate(now.clock));
        }
    }

    /// What the server's own monitor shows of the graphs' clocks; it draws on a terminal only.
    std::string serversTable() {
        return session.run({"timeout", "3", "script", "--quiet", "--command", "exec pw-top", "/dev/null"})
            .output;
    }

    std::vector<std::string> logged() const {
        std::vector<std::string> signatures;
        for (const auto& record : program.log()) signatures.push_back(signatureOf(record));
        return signatures;
    }

    std::minstd_rand random_{20261121};
};

/// The first of `wanted` that `found` does not have in its turn; empty when all are there in this order.
std::string firstMissing(const std::vector<std::string>& wanted, const std::vector<std::string>& found) {
    auto at = found.begin();
    for (const std::string& each : wanted) {
        at = std::find(at, found.end(), each);
        if (at == found.end()) return each;
        ++at;
    }
    return {};
}

/// On its way from one state to the next the session passes through others: a new default sink stands idle
/// before the stream has moved. They may be logged too. Every state that the session came to rest in has to
/// be, in order, and no line may repeat the one before.
TEST_F(Log, HoldsEveryChangeOnce) {
    const int count = test::countFromEnvironment("PURLOCK_RANDOM_CHANGES", 25);
    Session now;
    ASSERT_TRUE(session.forceClockRate(now.clock));
    program.start();
    ASSERT_TRUE(waitUntil([&] { return signatureOf(program.snapshot()) == now.signature(); }));
    std::vector<std::string> own = {now.signature()};
    for (int i = 0; i < count; ++i) {
        ASSERT_NO_FATAL_FAILURE(change(now));
        const std::string wanted = now.signature();
        ASSERT_TRUE(waitUntil([&] { return signatureOf(program.snapshot()) == wanted; }))
            << "change " << i << ": wanted " << wanted << ", shown " << signatureOf(program.snapshot())
            << "\n"
            << serversTable();
        if (own.back() != wanted) own.push_back(wanted);
    }
    EXPECT_TRUE(waitUntil([&] { return !logged().empty() && logged().back() == own.back(); }));
    const auto lines = logged();
    EXPECT_EQ(firstMissing(own, lines), "");
    EXPECT_EQ(std::adjacent_find(lines.begin(), lines.end()), lines.end()) << "a line twice";
    EXPECT_EQ(program.faults(), "");
    std::cout << count << " changes, " << own.size() << " settled states, " << lines.size() << " lines\n";
}

/// The server tells of a device first and of its formats later.
TEST_F(Log, NamesNoDeviceBeforeItsFormats) {
    for (int i = 0; i < 5; ++i) {
        program.start();
        ASSERT_TRUE(program.awaitVerdict("idle"));
        const std::string name = "plugged" + std::to_string(i);
        ASSERT_TRUE(session.loadNullSink(name, 44100));
        ASSERT_TRUE(session.setDefaultSink(name));
        ASSERT_TRUE(waitUntil([&] { return !logged().empty() && logged().back().starts_with(name); }));
        program.process().kill();
    }
    for (const std::string& each : logged()) EXPECT_EQ(each.find("|-"), std::string::npos) << each;
}

}  // namespace
}  // namespace purlock
