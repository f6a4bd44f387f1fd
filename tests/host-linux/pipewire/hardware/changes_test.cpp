#include <atomic>
#include <memory>
#include <utility>

#include "base/worker_pool.h"
#include "tests/host-linux/pipewire/hardware/audio_test.h"

namespace purlock {
namespace {

using test::AudioTest;
using test::waitUntil;
using namespace std::chrono_literals;

/// Counts the notifications of one property while it lives.
class Counter {
  public:
    Counter(AudioHardware& hardware, std::shared_ptr<SerialQueue> queue, AudioObjectID object,
            std::uint32_t selector, std::uint32_t scope = kAudioObjectPropertyScopeGlobal)
        : hardware_(hardware), queue_(std::move(queue)), object_(object), address_{selector, scope, 0} {
        status = hardware_.addPropertyListenerBlock(object_, address_, queue_, block_);
    }
    ~Counter() { hardware_.removePropertyListenerBlock(object_, address_, queue_, block_); }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    int count() const { return *count_; }
    bool hasRisenAbove(int before) const {
        return waitUntil([&] { return *count_ > before; });
    }

    HardwareStatus status = noErr;

  private:
    AudioHardware& hardware_;
    const std::shared_ptr<SerialQueue> queue_;
    const AudioObjectID object_;
    const PropertyAddress address_;
    const std::shared_ptr<std::atomic<int>> count_ = std::make_shared<std::atomic<int>>(0);
    const ListenerBlock block_ =
        std::make_shared<const std::function<void()>>([count = count_] { ++*count; });
};

class Changes : public AudioTest {
  protected:
    WorkerPool pool{2};
    std::shared_ptr<SerialQueue> queue = pool.makeSerialQueue("test.changes");
};

TEST_F(Changes, TheListAndTheDefaultFollowSinksThatComeAndGo) {
    ASSERT_TRUE(session.loadNullSink("first", 48000));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("first") != 0; }));
    Counter list(*hardware, queue, kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
    Counter output(*hardware, queue, kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice);
    const auto module = session.loadNullSink("second", 48000);
    ASSERT_TRUE(module);
    EXPECT_TRUE(list.hasRisenAbove(0));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("second") != 0; }));
    const AudioObjectID first = observer().deviceByUID("first");
    const AudioObjectID second = observer().deviceByUID("second");
    for (const char* const name : {"second", "first", "second"}) {
        const int before = output.count();
        if (observer().defaultOutput() == observer().deviceByUID(name)) continue;
        ASSERT_TRUE(session.setDefaultSink(name));
        EXPECT_TRUE(output.hasRisenAbove(before));
        EXPECT_TRUE(waitUntil([&] { return observer().defaultOutput() == observer().deviceByUID(name); }));
    }
    const int listed = list.count();
    ASSERT_TRUE(session.unloadModule(*module));
    EXPECT_TRUE(list.hasRisenAbove(listed));
    EXPECT_TRUE(waitUntil([&] { return observer().deviceByUID("second") == 0; }));
    EXPECT_TRUE(waitUntil([&] { return observer().defaultOutput() == first; }));
    EXPECT_EQ(observer().text(second, kAudioObjectPropertyName), std::nullopt) << "its id is not used again";
    EXPECT_EQ(hardware->addPropertyListenerBlock(second, {kAudioDevicePropertyStreams, 0, 0}, queue,
                                                 std::make_shared<const std::function<void()>>([] {})),
              kAudioHardwareBadObjectError);
}

/// The server tells a change of the store to nobody but a program that is just binding it, if there is one. A
/// change that is missed shows when the session manager moves what plays.
TEST_F(Changes, ADefaultThatChangesWhileProgramsConnectIsSeenInTheEnd) {
    constexpr int rounds = 40;
    constexpr const char* connecting[] = {"connecting", "connecting as well", "connecting too"};
    ASSERT_TRUE(session.loadNullSink("first", 48000));
    ASSERT_TRUE(session.loadNullSink("second", 48000));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("second") != 0; }));
    session.spawn("player", {"pacat", "--raw", "--format=s16le", "--rate=48000", "/dev/zero"});
    ASSERT_TRUE(waitUntil([&] { return !observer().processes().empty(); }));
    for (int round = 0; round < rounds; ++round) {
        const std::string name = round % 2 == 0 ? "first" : "second";
        for (const char* each : connecting) {
            session.spawn(each, {"sh", "-c", "while pw-metadata 0 default.audio.sink; do :; done"});
        }
        ASSERT_TRUE(session.setDefaultSink(name));
        const auto isNamed = [&] { return observer().defaultOutput() == observer().deviceByUID(name); };
        waitUntil(isNamed, 200ms);
        for (const char* each : connecting) session.process(each).kill();
        EXPECT_TRUE(waitUntil(isNamed, 2s)) << "round " << round;
    }
}

/// While nothing plays, the store is asked once programs have stopped coming.
TEST_F(Changes, ADefaultThatIsMissedInSilenceIsSeenLater) {
    constexpr int rounds = 3;
    ASSERT_TRUE(session.loadNullSink("first", 48000));
    ASSERT_TRUE(session.loadNullSink("second", 48000));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("second") != 0; }));
    for (int round = 0; round < rounds; ++round) {
        const std::string name = round % 2 == 0 ? "first" : "second";
        session.spawn("connecting", {"sh", "-c", "while pw-metadata 0 default.audio.sink; do :; done"});
        for (const char* each : {"second", "first", name.c_str()}) ASSERT_TRUE(session.setDefaultSink(each));
        session.process("connecting").kill();
        const auto isNamed = [&] { return observer().defaultOutput() == observer().deviceByUID(name); };
        EXPECT_TRUE(waitUntil(isNamed, 8s)) << "round " << round;
    }
}

/// For as long as a program binds the store, the server withholds its changes from everybody else.
TEST_F(Changes, ABystanderMissesNothing) {
    constexpr int changes = 10000;
    ASSERT_TRUE(session.loadNullSink("first", 48000));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("first") != 0; }));
    const auto result = session.run({METADATA_BYSTANDER, std::to_string(changes)}, 60s);
    EXPECT_EQ(result.output, std::to_string(changes) + "\n") << "what a listener heard of";
}

TEST_F(Changes, AManagerThatHangsIsNoServerThatIsGone) {
    ASSERT_TRUE(session.loadNullSink("first", 48000));
    session.spawn("player", {"pacat", "--raw", "--format=s16le", "--rate=48000", "/dev/zero"});
    const auto isPlaying = [&] { return observer().isRunning(observer().deviceByUID("first")); };
    ASSERT_TRUE(session.setDefaultSink("first"));
    ASSERT_TRUE(waitUntil(isPlaying));
    session.process("wireplumber").pause();
    session.run({"pw-cli", "info", "0"});
    const bool isLost = waitUntil([&] { return !isPlaying(); }, 4500ms);
    EXPECT_FALSE(isLost) << "the music goes on";
    session.process("wireplumber").resume();
}

TEST_F(Changes, TheLastDefaultStandsWhileThereIsNoManager) {
    ASSERT_TRUE(session.loadNullSink("first", 48000, "priority.session=2000"));
    ASSERT_TRUE(session.loadNullSink("second", 48000, "priority.session=1000"));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("second") != 0; }));
    ASSERT_TRUE(session.setDefaultSink("second"));
    const auto isSecond = [&] { return observer().defaultOutput() == observer().deviceByUID("second"); };
    ASSERT_TRUE(waitUntil(isSecond));
    session.process("wireplumber").kill();
    EXPECT_FALSE(waitUntil([&] { return !isSecond(); }, 1s)) << "of the highest priority is the other";
    ASSERT_TRUE(session.startSessionManager());
    ASSERT_TRUE(session.setDefaultSink("first"));
    EXPECT_TRUE(waitUntil([&] { return !isSecond(); })) << "the new manager's word counts";
}

TEST_F(Changes, StartAndStopAreToldForTheDeviceAndTheProcesses) {
    ASSERT_TRUE(session.loadNullSink("null48", 48000));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("null48") != 0; }));
    const AudioObjectID device = observer().deviceByUID("null48");
    const AudioObjectID stream = observer().ids(device, kAudioDevicePropertyStreams).front();
    Counter running(*hardware, queue, device, kAudioDevicePropertyDeviceIsRunningSomewhere);
    Counter mixed(*hardware, queue, stream, kAudioStreamPropertyVirtualFormat);
    const auto otherQueue = pool.makeSerialQueue("test.changes.processes");
    Counter processes(*hardware, otherQueue, kAudioObjectSystemObject,
                      kAudioHardwarePropertyProcessObjectList);
    session.spawn("player", {"pw-play", "--target", "null48", session.toneFile(44100)});
    EXPECT_TRUE(
        waitUntil([&] { return observer().isRunning(device) && observer().virtualRate(device) == 44100; }));
    EXPECT_TRUE(running.hasRisenAbove(0));
    EXPECT_TRUE(processes.hasRisenAbove(0));
    EXPECT_EQ(mixed.count(), 0) << "the device's start and its format are one change, told once";
    const int before = running.count();
    session.process("player").kill();
    EXPECT_TRUE(running.hasRisenAbove(before));
    EXPECT_TRUE(waitUntil([&] { return !observer().isRunning(device) && observer().processes().empty(); }));
    EXPECT_TRUE(waitUntil([&] { return observer().virtualRate(device) == 48000; }));
    expectAsDumped("null48");
}

TEST_F(Changes, ABurstEndsInTheLastStateAndUnchangedAnswersAreNotTold) {
    ASSERT_TRUE(session.loadNullSink("first", 48000));
    ASSERT_TRUE(session.loadNullSink("second", 48000));
    ASSERT_TRUE(waitUntil([&] { return observer().deviceByUID("second") != 0; }));
    Counter list(*hardware, queue, kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
    Counter output(*hardware, queue, kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice);
    constexpr int switches = 10000;
    // One client writes all of it, as fast as the server takes it.
    const auto result = session.run({METADATA_WRITER, std::to_string(switches), "default.audio.sink",
                                     "{ \"name\": \"first\" }", "{ \"name\": \"second\" }"},
                                    std::chrono::seconds(60));
    ASSERT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_TRUE(waitUntil([&] { return observer().defaultOutput() == observer().deviceByUID("second"); }));
    EXPECT_EQ(list.count(), 0);
    EXPECT_LT(output.count(), switches) << "one look may answer for many changes";
    RecordProperty("notifications", output.count());
}

}  // namespace
}  // namespace purlock
