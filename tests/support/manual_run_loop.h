#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "base/run_loop.h"

namespace purlock::test {

/// A run loop under virtual time: nothing happens until the test says so, and 80 ms take no time at all.
///
/// `post` may be called from any thread, all else from the test's own.
class ManualRunLoop final : public RunLoop {
  public:
    using Milliseconds = std::chrono::milliseconds;

    void post(Task task) override {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(task));
    }

    Cancellable postDelayed(Milliseconds delay, Task task) override {
        return addTimer(delay, {}, std::move(task));
    }

    /// Runs `task` at its delay, as a loop may.
    Cancellable postDelayedWithTolerance(Milliseconds delay, Milliseconds tolerance, Task task) override {
        tolerances_.push_back(tolerance);
        return postDelayed(delay, std::move(task));
    }

    Cancellable repeat(Milliseconds interval, Task task) override {
        return addTimer(interval, interval, std::move(task));
    }

    /// Virtual time since the loop was made.
    Milliseconds now() const { return now_; }

    /// One turn: what is posted now, not what it posts in turn. Returns how many tasks ran.
    std::size_t runPosted() {
        std::deque<Task> tasks;
        {
            const std::lock_guard lock(mutex_);
            tasks.swap(posted_);
        }
        for (Task& task : tasks) task();
        return tasks.size();
    }

    /// Turns until nothing is posted any more; time stands still.
    void runUntilIdle() {
        while (runPosted() > 0) {
        }
    }

    /// Lets `duration` pass: every timer fires at its own instant, in order, each followed by what it posted.
    void advance(Milliseconds duration) {
        const Milliseconds end = now_ + duration;
        runUntilIdle();
        while (!timers_.empty() && timers_.begin()->first.first <= end) {
            fireFirstTimer();
            runUntilIdle();
        }
        now_ = end;
    }

    /// How many timers wait; those whose handle was dropped do not count.
    std::size_t timerCount() const {
        std::size_t count = 0;
        for (const auto& [due, timer] : timers_) count += timer.alive.expired() ? 0U : 1U;
        return count;
    }

    /// How much longer tasks might have waited, in the order of the calls. Forgets them.
    std::vector<Milliseconds> takeTolerances() { return std::exchange(tolerances_, {}); }

  private:
    struct Timer {
        std::weak_ptr<void> alive;
        Milliseconds interval{};  // 0 for a timer that fires once
        std::shared_ptr<Task> task;
    };

    Cancellable addTimer(Milliseconds delay, Milliseconds interval, Task task) {
        auto alive = std::make_shared<int>(0);
        timers_.emplace(std::pair(now_ + delay, ++serial_),
                        Timer{alive, interval, std::make_shared<Task>(std::move(task))});
        return Cancellable(std::move(alive));
    }

    void fireFirstTimer() {
        const auto entry = timers_.extract(timers_.begin());
        now_ = std::max(now_, entry.key().first);
        const Timer& timer = entry.mapped();
        if (timer.alive.expired()) return;
        if (timer.interval.count() > 0) timers_.emplace(std::pair(now_ + timer.interval, ++serial_), timer);
        (*timer.task)();
    }

    std::mutex mutex_;
    std::deque<Task> posted_;
    std::map<std::pair<Milliseconds, std::uint64_t>, Timer>
        timers_;  // by due time, then in the order of the calls
    std::vector<Milliseconds> tolerances_;
    Milliseconds now_{};
    std::uint64_t serial_ = 0;
};

/// Wall-clock time that follows a manual run loop's virtual time from a given start.
class ManualClock final : public Clock {
  public:
    ManualClock(const ManualRunLoop& loop, WallTime start) : loop_(loop), start_(start) {}

    WallTime now() const override { return start_ + loop_.now(); }

  private:
    const ManualRunLoop& loop_;
    const WallTime start_;
};

}  // namespace purlock::test
