#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "base/run_loop.h"
#include "platform/linux/toolkit/due_tasks.h"

namespace purlock::host_linux {

/// The main run loop over Qt's event loop. Made on the main thread after the Qt application object, and alive
/// as long.
///
/// Waking Qt's loop costs far more than most tasks do. So it is woken once for all that is posted before its
/// next turn, what tasks post is run in the same turn, and all timers share one of Qt's. No task may run an
/// event loop of its own: what is posted meanwhile would wait for its end.
class QtRunLoop final : public RunLoop {
  public:
    QtRunLoop();
    ~QtRunLoop() override;

    void post(Task task) override;
    Cancellable postDelayed(std::chrono::milliseconds delay, Task task) override;
    Cancellable postDelayedWithTolerance(std::chrono::milliseconds delay, std::chrono::milliseconds tolerance,
                                         Task task) override;
    Cancellable repeat(std::chrono::milliseconds interval, Task task) override;

  private:
    class Receiver;

    void wake();
    void timerFired();
    void turn();
    bool runPosted();
    void setTimer();

    const std::unique_ptr<Receiver> receiver_;
    std::mutex mutex_;
    std::vector<Task> posted_;  // guarded by mutex_
    bool isAwake_ = false;      // guarded by mutex_; a turn is due or under way
    bool isTurning_ = false;
    std::optional<DueTasks::Moment> timerDue_;  // when Qt's timer fires, while it runs
    DueTasks waiting_;
};

}  // namespace purlock::host_linux
