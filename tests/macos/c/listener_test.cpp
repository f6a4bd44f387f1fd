// What the audio tests through this host cannot say: that the HAL is given back what it matches listeners by,
// and nothing stays with it.

#include <memory>

#include "platform/macos/coreaudio/core_audio_hardware.h"
#include "platform/macos/dispatch/dispatch_queue.h"
#include "tests/macos/c/no_leak.h"
#include "tests/macos/simulated/hal.h"
#include "tests/support/manual_queues.h"

namespace purlock::host_macos {
namespace {

constexpr PropertyAddress devices{kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal,
                                  kAudioObjectPropertyElementMain};

struct Listener : test::NoLeak {
    test::FakeAudioHardware fake;
    test::ManualQueues queues;
    simulated::Hal hal{fake};
    simulated::Dispatch dispatch{queues};
    CoreAudioHardware hardware;
    DispatchQueues factory;
    std::shared_ptr<SerialQueue> queue = factory.makeSerialQueue("q");
    int calls = 0;

    ListenerBlock counting() {
        return std::make_shared<const std::function<void()>>([this] { ++calls; });
    }

    HardwareStatus add(const ListenerBlock& block) {
        return hardware.addPropertyListenerBlock(kAudioObjectSystemObject, devices, queue, block);
    }

    HardwareStatus remove(const ListenerBlock& block) {
        return hardware.removePropertyListenerBlock(kAudioObjectSystemObject, devices, queue, block);
    }

    void notify() {
        fake.notify(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal);
        queues.run();
    }
};

TEST_F(Listener, IsRemovedByTheBlockThatWasAdded) {
    const auto block = counting();
    EXPECT_EQ(add(block), noErr);
    notify();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(remove(counting()), kAudioHardwareUnknownPropertyError) << "another block";
    notify();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(remove(block), noErr);
    notify();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(remove(block), kAudioHardwareUnknownPropertyError) << "a second time";
    EXPECT_EQ(fake.strayRemovals(), 0);
}

TEST_F(Listener, TheHalKeepsTheBlockAndTheQueueUntilThen) {
    auto block = counting();
    const std::weak_ptr<const std::function<void()>> watched = block;
    EXPECT_EQ(add(block), noErr);
    const auto* const kept = block.get();
    block.reset();
    EXPECT_FALSE(watched.expired());
    EXPECT_EQ(remove(watched.lock()), noErr);
    EXPECT_TRUE(watched.expired()) << kept;
}

TEST_F(Listener, ARefusedOneLeavesNothing) {
    fake.refuseListeners(true);
    const auto block = counting();
    EXPECT_EQ(add(block), kAudioHardwareBadObjectError);
    EXPECT_EQ(block.use_count(), 1);
    EXPECT_NE(remove(block), noErr);
}

TEST_F(Listener, TheEndOfTheHostRemovesWhatIsLeft) {
    {
        CoreAudioHardware shortLived;
        shortLived.addPropertyListenerBlock(kAudioObjectSystemObject, devices, queue, counting());
        EXPECT_EQ(fake.listeners().size(), 1U);
    }
    EXPECT_TRUE(fake.listeners().empty());
    EXPECT_EQ(fake.strayRemovals(), 0);
}

TEST_F(Listener, ATextOfTheHalIsReadAndReleased) {
    constexpr PropertyAddress name{kAudioObjectPropertyName, kAudioObjectPropertyScopeGlobal,
                                   kAudioObjectPropertyElementMain};
    fake.setText(50, kAudioObjectPropertyName, "Löud DAC 🎧");
    fake.setText(51, kAudioObjectPropertyName, std::nullopt);
    std::optional<std::string> text;
    EXPECT_EQ(hardware.getPropertyText(50, name, text), noErr);
    EXPECT_EQ(text, "Löud DAC 🎧");
    EXPECT_EQ(hardware.getPropertyText(51, name, text), noErr);
    EXPECT_EQ(text, std::nullopt) << "a null reference";
    EXPECT_EQ(hardware.getPropertyText(52, name, text), kAudioHardwareUnknownPropertyError);
}

}  // namespace
}  // namespace purlock::host_macos
