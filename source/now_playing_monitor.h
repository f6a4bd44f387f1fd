#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/cancellable.h"
#include "base/operating_system.h"
#include "base/published.h"
#include "base/run_loop.h"
#include "base/running_applications.h"
#include "base/serial_queue.h"
#include "core/playback.h"
#include "source/now_playing_framework.h"

namespace purlock {

/// What the now-playing monitor asks of the host. Each outlives the monitor and all work that it has queued.
struct NowPlayingSeams {
    RunLoop& runLoop;
    SerialQueueFactory& queues;
    OperatingSystem& operatingSystem;
    RunningApplications& applications;
    FrameworkLoader& frameworks;
    NotificationCenter& notificationCenter;
};

/// Tells what the operating system considers to be playing, through a framework that is opened at run time.
///
/// Made once with std::make_shared, then started once; main thread only. The framework answers on a serial
/// queue of the monitor's own; a value reaches `current` two turns of the main loop later at most. Work that
/// is under way when the monitor goes finds it gone and does nothing.
class NowPlayingMonitor : public std::enable_shared_from_this<NowPlayingMonitor> {
  public:
    /// Loads the framework, or publishes why there will be no information.
    explicit NowPlayingMonitor(const NowPlayingSeams& seams);

    /// Registers for the framework's notifications and fetches once; nothing when the framework cannot
    /// register.
    void start();

    /// Fetches once: asks the framework and publishes its answer, equal to the last one or not.
    void refresh();

    /// Absent when nothing plays.
    const Published<std::optional<NowPlayingInfo>>& current() const { return current_; }

    /// Why there is no information; set at most once, by the constructor.
    const Published<std::optional<std::string>>& unavailableReason() const { return unavailableReason_; }

  private:
    struct Reader;

    void loadFramework(const NowPlayingSeams& seams);
    void publish(const NowPlayingInfo& info);

    Published<std::optional<NowPlayingInfo>> current_;
    Published<std::optional<std::string>> unavailableReason_;
    NowPlayingFramework::GetInfoFunction getInfo_;
    NowPlayingFramework::RegisterFunction register_;
    NotificationCenter& notificationCenter_;
    std::shared_ptr<SerialQueue> workQueue_;
    std::shared_ptr<Reader> reader_;
    std::vector<Cancellable> observers_;
};

}  // namespace purlock
