#pragma once

#include "source/now_playing_framework.h"

namespace purlock::host_macos {

/// The process's default notification centre; blocks run on the main operation queue. Main thread.
class DefaultNotificationCenter final : public NotificationCenter {
  public:
    Cancellable addObserverForName(std::string_view name, std::function<void()> block) override;
};

}  // namespace purlock::host_macos
