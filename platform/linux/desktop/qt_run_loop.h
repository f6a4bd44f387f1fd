#pragma once

#include <QObject>

#include "base/run_loop.h"

namespace purlock::host_linux {

/// The main run loop over Qt's event loop. Made on the main thread after the Qt application object, and alive
/// as long.
class QtRunLoop final : public RunLoop {
  public:
    void post(Task task) override;
    Cancellable postDelayed(std::chrono::milliseconds delay, Task task) override;
    Cancellable repeat(std::chrono::milliseconds interval, Task task) override;

  private:
    Cancellable startTimer(std::chrono::milliseconds interval, bool repeating, Task task);

    QObject context_;  // lives on the main thread, so that posted work does
};

}  // namespace purlock::host_linux
