#pragma once

#include <chrono>
#include <functional>
#include <utility>

#include "base/cancellable.h"

namespace purlock {

/// The main thread's run loop: the only place where published values change and views are drawn.
///
/// Owned by the host and alive until the program ends. Tests use one with virtual time.
class RunLoop {
  public:
    using Task = std::function<void()>;

    RunLoop() = default;
    virtual ~RunLoop() = default;
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;

    /// Runs `task` on the main thread, never before this call has returned, in the order of the calls. Any
    /// thread.
    virtual void post(Task task) = 0;

    /// Runs `task` once, `delay` from now, unless the handle is dropped before. Main thread only.
    virtual Cancellable postDelayed(std::chrono::milliseconds delay, Task task) = 0;

    /// The same for work that may wait `tolerance` longer and need not wake the loop. It runs with the loop's
    /// first work after `delay`, and before what is due later. A loop may ignore the tolerance.
    virtual Cancellable postDelayedWithTolerance(std::chrono::milliseconds delay,
                                                 std::chrono::milliseconds /*tolerance*/, Task task) {
        return postDelayed(delay, std::move(task));
    }

    /// Runs `task` every `interval`, first one interval from now, until the handle is dropped. It fires also
    /// while menus are open. A loop that was busy for several intervals fires once, not once for each. Main
    /// thread only.
    virtual Cancellable repeat(std::chrono::milliseconds interval, Task task) = 0;
};

}  // namespace purlock
