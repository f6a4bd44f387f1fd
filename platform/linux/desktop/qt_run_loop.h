#pragma once

#include <QObject>
#include <mutex>
#include <vector>

#include "base/run_loop.h"

namespace purlock::host_linux {

/// The main run loop over Qt's event loop. Made on the main thread after the Qt application object, and alive
/// as long. However much is posted before the loop's next turn, the loop is woken once for it.
class QtRunLoop final : public RunLoop {
  public:
    void post(Task task) override;
    Cancellable postDelayed(std::chrono::milliseconds delay, Task task) override;
    Cancellable repeat(std::chrono::milliseconds interval, Task task) override;

  private:
    void runPosted();
    Cancellable startTimer(std::chrono::milliseconds interval, bool repeating, Task task);

    QObject context_;  // lives on the main thread, so that posted work does
    std::mutex mutex_;
    std::vector<Task> posted_;  // guarded by mutex_; the loop has been woken when there is any
};

}  // namespace purlock::host_linux
