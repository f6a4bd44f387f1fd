// Refreshes that the main thread and the layer ask for at once, on real threads. Most of what these
// tests say, they say under ThreadSanitizer.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "base/worker_pool.h"
#include "tests/audio/monitor_fixture.h"

namespace purlock {
namespace {

using test::globalScope;

/// The fake machine of the other tests, with real queues.
struct ThreadedFixture : test::MonitoredMachine {
    WorkerPool pool{4};
    std::unique_ptr<test::HardwareUnderTest> poolWay = test::HardwareUnderTest::make(hardware, pool);
    std::shared_ptr<AudioMonitor> monitor = makeMonitor(*poolWay);

    ~ThreadedFixture() {
        monitor.reset();
        pool.finish();
    }

    /// Runs posted work until `done`, with a deadline.
    template <typename Condition>
    bool pumpUntil(Condition done) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!done()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            if (loop.runPosted() == 0) std::this_thread::yield();
        }
        return true;
    }
};

TEST(AudioMonitorConcurrency, NotificationsTimerAndPinTogether) {
    ThreadedFixture f;
    f.monitor->start();
    std::atomic<bool> stop = false;
    std::thread events([&] {
        for (int i = 0; i < 2000; ++i) {
            f.setDefault(i % 2 == 0 ? 60 : 50);
            f.hardware.notify(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice,
                              globalScope);
            f.hardware.notify(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope);
        }
        stop = true;
    });
    for (int i = 0; !stop; ++i) {
        f.monitor->refreshState();
        if (i % 7 == 0) {
            f.pin->setPinnedDeviceUID(i % 2 == 0 ? std::optional<std::string>("cans-1") : std::nullopt);
        }
        f.loop.runPosted();
    }
    events.join();
    f.pin->setPinnedDeviceUID(std::nullopt);
    EXPECT_TRUE(f.pumpUntil([&] {
        const auto& state = f.monitor->state().value();
        return state && state->deviceID == 50;
    }));
    f.pool.finish();  // refreshes that are under way move the listeners
    EXPECT_EQ(f.hardware.strayRemovals(), 0);
    EXPECT_EQ(f.hardware.listeners().size(), 7U);
}

TEST(AudioMonitorConcurrency, StatesArePublishedInTheOrderOfTheirRefreshes) {
    ThreadedFixture f;
    f.monitor->start();
    std::vector<double> rates;
    const Cancellable watching = f.monitor->state().subscribe([&](const std::optional<DeviceState>& state) {
        if (state) rates.push_back(state->physicalFormat->sampleRate);
    });
    std::thread events([&] {
        for (int i = 1; i <= 3000; ++i) {
            f.hardware.setFormat(51, kAudioStreamPropertyPhysicalFormat, test::integerStream(50000 + i, 24));
            f.hardware.notify(51, kAudioStreamPropertyPhysicalFormat, globalScope);
        }
    });
    EXPECT_TRUE(f.pumpUntil([&] {
        f.monitor->refreshState();
        return !rates.empty() && rates.back() == 53000;
    }));
    events.join();
    EXPECT_TRUE(std::ranges::is_sorted(rates)) << "the rate only rises";
}

TEST(AudioMonitorConcurrency, TheEndWhileNotificationsArrive) {
    for (int round = 0; round < 50; ++round) {
        ThreadedFixture f;
        f.monitor->start();
        std::thread events([&] {
            for (int i = 0; i < 40; ++i) {
                f.hardware.notify(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope);
                f.hardware.notify(50, kAudioDevicePropertyNominalSampleRate, globalScope);
            }
        });
        f.loop.runPosted();
        f.monitor.reset();
        events.join();
        EXPECT_TRUE(f.pumpUntil([&] { return f.hardware.listeners().empty(); }));
        EXPECT_EQ(f.hardware.strayRemovals(), 0);
    }
}

}  // namespace
}  // namespace purlock
