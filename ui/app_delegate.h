#pragma once

#include <memory>
#include <optional>

#include "app/report_coordinator.h"
#include "app/settings_store.h"
#include "app/state_logger.h"
#include "app/state_snapshot.h"
#include "audio/audio_monitor.h"
#include "base/run_loop.h"
#include "source/now_playing_monitor.h"

namespace purlock {

/// What the shell asks of the host, for itself and for the monitors that it makes. All of it outlives the
/// shell.
struct AppDelegateSeams {
    RunLoop& mainLoop;
    AudioMonitorSeams audio;
    NowPlayingSeams nowPlaying;
    ReportCoordinatorSeams coordinator;
};

/// The frame of the program: owns the long-lived objects, wires them together at launch, hands every device
/// state to the snapshot and the log, and refreshes everything every 0.8 s in case a notification was missed.
///
/// Made and launched once, on the main thread, after the shared services were provided.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
  public:
    explicit AppDelegate(const AppDelegateSeams& seams);

    /// Starts everything, in the order that lets the coordinator see each monitor's first value.
    void applicationDidFinishLaunching();

    /// Made on first use.
    const std::shared_ptr<ReportCoordinator>& coordinator();

    const std::shared_ptr<SettingsStore>& settings() const { return settings_; }
    const std::shared_ptr<AudioMonitor>& monitor() const { return monitor_; }
    const std::shared_ptr<NowPlayingMonitor>& nowPlaying() const { return nowPlaying_; }
    const std::shared_ptr<StateLogger>& logger() const { return logger_; }

  private:
    void followState();
    void stateDelivered(const std::optional<DeviceState>& state);
    void startSafetyNetTimer();

    const AppDelegateSeams seams_;
    const std::shared_ptr<SettingsStore> settings_;
    const std::shared_ptr<AudioMonitor> monitor_;
    const std::shared_ptr<NowPlayingMonitor> nowPlaying_;
    std::shared_ptr<ReportCoordinator> coordinator_;
    const std::shared_ptr<StateLogger> logger_;
    Cancellable stateSubscription_;
    Cancellable safetyTimer_;
};

}  // namespace purlock
