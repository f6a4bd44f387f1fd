#pragma once

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "base/worker_pool.h"
#include "platform/linux/nowplaying/mpris_framework.h"
#include "source/now_playing_monitor.h"
#include "tests/support/fake_operating_system.h"
#include "tests/support/fake_running_applications.h"
#include "tests/support/manual_run_loop.h"
#include "tests/support/print_playback.h"

namespace purlock::test {

/// The now-playing monitor over the session bus of a test, with real worker threads. This thread is the main
/// one; it turns its loop in `turnUntil` and notes how long each turn takes.
class NowPlayingSession {
  public:
    using Info = std::optional<NowPlayingInfo>;
    using Clock = std::chrono::steady_clock;

    explicit NowPlayingSession(const std::string& busAddress) : NowPlayingSession(busAddress, nullptr) {}

    /// With the desktop's own idea of the running applications, or with `applications` where there is none.
    NowPlayingSession(const std::string& busAddress, RunningApplications* desktop)
        : loader_(thread_, busAddress, center_, files_) {
        applications.setRunning({{getpid(), "com.example.test", "Test"}});
        RunningApplications& used = desktop != nullptr ? *desktop : applications;
        monitor_ = std::make_shared<NowPlayingMonitor>(
            NowPlayingSeams{loop_, *pool_, operatingSystem_, used, loader_, center_});
        counting_ = monitor_->current().subscribe([this](const Info&) { ++publications_; });
        monitor_->start();
    }

    ~NowPlayingSession() {
        counting_.cancel();
        monitor_.reset();
        pool_.reset();
        loop_.runUntilIdle();
    }
    NowPlayingSession(const NowPlayingSession&) = delete;
    NowPlayingSession& operator=(const NowPlayingSession&) = delete;

    const Info& info() const { return monitor_->current().value(); }
    const std::optional<std::string>& unavailableReason() const {
        return monitor_->unavailableReason().value();
    }
    int publications() const { return publications_; }
    void refresh() { monitor_->refresh(); }

    std::optional<host_linux::PlayerIdentity> identityOf(std::int32_t process) const {
        return loader_.identityOf(process);
    }
    std::uint64_t changes() const { return loader_.changes(); }
    Cancellable subscribe(std::function<void(const Info&)> observer) {
        return monitor_->current().subscribe(std::move(observer));
    }

    /// Turns the main loop until the condition holds; false when it does not in time.
    template <typename Condition>
    bool turnUntil(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        const auto deadline = Clock::now() + limit;
        while (!condition()) {
            if (Clock::now() > deadline) return false;
            turn();
        }
        return true;
    }

    /// Turns the main loop for a while.
    void turnFor(std::chrono::milliseconds time) {
        turnUntil([] { return false; }, time);
    }

    /// The longest single turn so far, without the time for which other programs had the processor.
    Clock::duration longestTurn() const { return longestTurn_; }

    FakeRunningApplications applications;

  private:
    void turn() {
        const auto waitedBefore = waitedForProcessor();
        const auto start = Clock::now();
        const bool idle = loop_.runPosted() == 0;
        const auto taken = Clock::now() - start;
        longestTurn_ = std::max(longestTurn_, taken - (waitedForProcessor() - waitedBefore));
        if (idle) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    /// How long this thread was ready to run and did not, as the kernel counts it (the second number, in ns).
    static std::chrono::nanoseconds waitedForProcessor() {
        long long running = 0;
        long long waiting = 0;
        std::ifstream("/proc/thread-self/schedstat") >> running >> waiting;
        return std::chrono::nanoseconds(waiting);
    }

    ManualRunLoop loop_;
    host_linux::BusThread thread_;
    host_linux::MainNotificationCenter center_{loop_};
    std::unique_ptr<WorkerPool> pool_ = std::make_unique<WorkerPool>(2);
    host_linux::PlayedFiles files_{pool_->makeSerialQueue("files")};
    host_linux::MprisFrameworkLoader loader_;
    FakeOperatingSystem operatingSystem_;
    std::shared_ptr<NowPlayingMonitor> monitor_;
    Cancellable counting_;
    int publications_ = 0;
    Clock::duration longestTurn_{};
};

}  // namespace purlock::test
