#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "base/worker_pool.h"
#include "source/now_playing_monitor.h"
#include "tests/source/now_playing_fixture.h"

namespace purlock {
namespace {

using namespace test;
using std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(20);

/// A host with real worker threads; this thread is the main one and the run loop is turned by hand.
struct ThreadedHost {
    ManualRunLoop loop;
    FakeOperatingSystem operatingSystem;
    FakeRunningApplications applications;
    FakeFrameworkLoader loader;
    FakeNotificationCenter center{loop};
    std::shared_ptr<FakeNowPlayingFramework> framework = std::make_shared<FakeNowPlayingFramework>();
    std::unique_ptr<WorkerPool> pool = std::make_unique<WorkerPool>(3);

    ThreadedHost() {
        applications.setRunning({{NowPlayingFixture::player, "com.example.player", "Player"}});
        loader.provide(framework);
    }

    std::shared_ptr<NowPlayingMonitor> makeMonitor() {
        return std::make_shared<NowPlayingMonitor>(
            NowPlayingSeams{loop, *pool, operatingSystem, applications, loader, center});
    }

    template <typename Condition>
    bool turnUntil(Condition condition) {
        const auto deadline = steady_clock::now() + patience;
        while (!condition()) {
            if (steady_clock::now() > deadline) return false;
            if (loop.runPosted() == 0) std::this_thread::yield();
        }
        return true;
    }
};

/// Posts notifications with a changing answer, like a busy framework's own thread, until it is destroyed.
class BusyFramework {
  public:
    explicit BusyFramework(ThreadedHost& host) {
        thread_ = std::thread([this, &host] {
            for (double second = 0; !stop_; ++second) {
                host.framework->setAnswer({{titleKey, "Song"}, {elapsedKey, second}},
                                          NowPlayingFixture::player);
                host.center.post(infoChanged);
                ++posted_;
                std::this_thread::yield();
            }
        });
    }

    ~BusyFramework() {
        stop_ = true;
        thread_.join();
    }

    int posted() const { return posted_; }

  private:
    std::atomic<bool> stop_ = false;
    std::atomic<int> posted_ = 0;
    std::thread thread_;
};

TEST(NowPlayingMonitorThreads, PublishesWhatABusyFrameworkAnswers) {
    ThreadedHost host;
    const auto monitor = host.makeMonitor();
    int published = 0;
    const auto kept = monitor->current().subscribe([&](const auto&) { ++published; });
    monitor->start();
    {
        const BusyFramework busy(host);
        EXPECT_TRUE(host.turnUntil([&] { return published > 300; }));
    }
    host.framework->setAnswer({{titleKey, "Last"}}, NowPlayingFixture::player);
    monitor->refresh();
    EXPECT_TRUE(host.turnUntil([&] { return monitor->current().value()->title == "Last"; }));
    EXPECT_EQ(monitor->current().value()->appBundleID, "com.example.player");
    host.pool.reset();
}

TEST(NowPlayingMonitorThreads, MayEndAtAnyMomentOfAFetch) {
    ThreadedHost host;
    {
        const BusyFramework busy(host);
        ASSERT_TRUE(host.turnUntil([&] { return busy.posted() > 0; })) << "its thread has not begun";
        for (int life = 0; life < 200; ++life) {
            auto monitor = host.makeMonitor();
            monitor->start();
            monitor->refresh();
            for (int turn = 0; turn < life % 5; ++turn) host.loop.runPosted();
            const std::weak_ptr<NowPlayingMonitor> witness = monitor;
            monitor.reset();
            EXPECT_TRUE(witness.expired()) << "something kept the monitor alive in life " << life;
        }
    }
    host.pool.reset();
    host.loop.runUntilIdle();
    EXPECT_TRUE(host.center.observedNames().empty());
}

}  // namespace
}  // namespace purlock
