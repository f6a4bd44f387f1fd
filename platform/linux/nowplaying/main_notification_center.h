#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/run_loop.h"
#include "source/now_playing_framework.h"

namespace purlock::host_linux {

/// The process's notification centre. Any thread may post; observers hear of it on the main run loop. Owned
/// by the host.
class MainNotificationCenter final : public NotificationCenter {
  public:
    explicit MainNotificationCenter(RunLoop& loop) : loop_(loop) {}

    Cancellable addObserverForName(std::string_view name, std::function<void()> block) override;

    /// Any thread; returns before any observer has run.
    void post(std::string_view name);

  private:
    struct Observer {
        std::string name;
        std::function<void()> block;
    };

    RunLoop& loop_;
    std::mutex mutex_;
    std::vector<std::weak_ptr<Observer>> observers_;  // weak, so that a dropped handle ends the registration
};

}  // namespace purlock::host_linux
