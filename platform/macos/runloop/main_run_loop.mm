#include "platform/macos/runloop/main_run_loop.h"

#include <Foundation/Foundation.h>

#include <memory>
#include <utility>

#include "platform/macos/dispatch/dispatch_queue.h"

namespace purlock::host_macos {

namespace {

using Seconds = std::chrono::duration<NSTimeInterval>;

/// The run loop keeps the timer, and the timer its block: the block holds the task weakly, and the handle
/// ends the timer.
class RepeatingTimer {
  public:
    RepeatingTimer(std::chrono::milliseconds interval, RunLoop::Task task)
        : task_(std::make_shared<const RunLoop::Task>(std::move(task))) {
        const std::weak_ptr<const RunLoop::Task> weak = task_;
        timer_ = [NSTimer timerWithTimeInterval:Seconds(interval).count()
                                        repeats:YES
                                          block:^(NSTimer* /*timer*/) {
                                            @autoreleasepool {
                                                if (const auto kept = weak.lock()) (*kept)();
                                            }
                                          }];
        [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
    }
    ~RepeatingTimer() { [timer_ invalidate]; }
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;

  private:
    const std::shared_ptr<const RunLoop::Task> task_;
    NSTimer* timer_;
};

}  // namespace

void MainRunLoop::post(Task task) {
    dispatchToMain(std::move(task));
}

Cancellable MainRunLoop::postDelayed(std::chrono::milliseconds delay, Task task) {
    const auto kept = std::make_shared<Task>(std::move(task));
    dispatchToMainAfter(delay, [weak = std::weak_ptr(kept)] {
        if (const auto due = weak.lock()) (*due)();
    });
    return Cancellable(kept);
}

Cancellable MainRunLoop::repeat(std::chrono::milliseconds interval, Task task) {
    return Cancellable(std::make_shared<RepeatingTimer>(interval, std::move(task)));
}

}  // namespace purlock::host_macos
