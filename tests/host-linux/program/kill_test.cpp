#include <random>

#include "tests/host-linux/program/program_test.h"

namespace purlock {
namespace {

using namespace std::chrono_literals;
using test::waitUntil;

class Kill : public test::ProgramWithSoundTest {
  protected:
    /// The default changes without a pause, so that both files are always about to be written.
    void startStorm() {
        constexpr const char* script =
            "while :; do for sink in null44 null48; do"
            " pw-metadata 0 default.audio.sink \"{ \\\"name\\\": \\\"$sink\\\" }\" Spa:String:JSON; done; "
            "done";
        session.spawn("storm", {"sh", "-c", script});
    }

    /// The names in the folder beside the two files.
    std::string strays() const {
        std::string names;
        if (!std::filesystem::exists(program.folder())) return names;
        for (const auto& entry : std::filesystem::directory_iterator(program.folder())) {
            const std::string name = entry.path().filename();
            if (name != "state.json" && name != "log.jsonl") names += name + " ";
        }
        return names;
    }

    /// Reads like a script that cannot know when the program writes.
    void readUntil(std::chrono::steady_clock::time_point end) {
        while (std::chrono::steady_clock::now() < end) {
            ASSERT_FALSE(program.snapshot().is_discarded());
            ++reads_;
        }
    }

    int reads_ = 0;
};

TEST_F(Kill, LeavesWholeFilesAtAnyMoment) {
    const int count = test::countFromEnvironment("PURLOCK_KILLS", 20);
    ASSERT_TRUE(session.loadNullSink("null44", 44100));
    startStorm();
    std::minstd_rand random(20261121);
    int strayCount = 0;
    for (int i = 0; i < count; ++i) {
        const auto wait = std::chrono::microseconds(random() % 900'000);
        program.start();
        ASSERT_NO_FATAL_FAILURE(readUntil(std::chrono::steady_clock::now() + wait));
        ASSERT_TRUE(program.isRunning()) << "it ended by itself";
        program.process().kill();
        ASSERT_EQ(program.faults(), "") << "kill " << i << " after " << wait.count() << " us";
        if (!strays().empty()) ++strayCount;
    }
    ASSERT_TRUE(session.process("storm").isRunning()) << session.logs();
    std::cout << count << " kills, " << reads_ << " reads between them, " << program.log().size()
              << " lines, stray files after " << strayCount << " kills\n";
    // A kill before the new file has the old one's place leaves it under its first name; the next write takes
    // it away.
    std::filesystem::remove(program.stateFile());
    program.start();
    ASSERT_TRUE(waitUntil([&] { return program.snapshot().is_object(); }));
    program.process().signal(SIGTERM);
    EXPECT_EQ(program.process().waitForExit(5s), 0);
    EXPECT_EQ(strays(), "");
    EXPECT_GT(program.log().size(), static_cast<std::size_t>(count)) << "there was something to interrupt";
}

}  // namespace
}  // namespace purlock
