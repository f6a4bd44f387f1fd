#pragma once

#include "base/run_loop.h"

namespace purlock::host_macos {

/// The main thread's run loop. What is posted goes through the main queue; a repeating timer runs in the
/// common modes, so that it fires also while a menu is open or the panel is scrolled.
class MainRunLoop final : public RunLoop {
  public:
    void post(Task task) override;
    Cancellable postDelayed(std::chrono::milliseconds delay, Task task) override;
    Cancellable repeat(std::chrono::milliseconds interval, Task task) override;
};

}  // namespace purlock::host_macos
