#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/report_coordinator.h"
#include "app/settings_store.h"
#include "app/state_logger.h"
#include "app/state_snapshot.h"
#include "audio/audio_monitor.h"
#include "base/run_loop.h"
#include "source/now_playing_monitor.h"
#include "ui/menubar_panel.h"
#include "ui/window_seams.h"

namespace purlock {

/// What the shell asks of the host, for itself and for what it makes. All of it outlives the shell.
struct AppDelegateSeams {
    RunLoop& mainLoop;
    AudioMonitorSeams audio;
    NowPlayingSeams nowPlaying;
    ReportCoordinatorSeams coordinator;
    WindowSeams windows;
};

/// The frame of the program: owns the long-lived objects, wires them together at launch, shows the verdict in
/// the status item, drops the panel down under it, hands every device state to the snapshot and the log, and
/// refreshes everything every 0.8 s in case a notification was missed.
///
/// Made and launched once, on the main thread, after the shared services were provided; held by a shared
/// pointer, for every closure that it hands out holds it weakly.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
  public:
    /// Asks nothing of the windows yet.
    explicit AppDelegate(const AppDelegateSeams& seams);

    /// Starts everything. The order matters: the coordinator sees each monitor's first value.
    void applicationDidFinishLaunching();

    /// What a click on the status item does: shows the panel on fresh data, or hides it.
    void togglePanel();

    /// Hides the panel, if it is there.
    void closePanel();

    /// Made on first use.
    const std::shared_ptr<ReportCoordinator>& coordinator();

    const std::shared_ptr<SettingsStore>& settings() const { return settings_; }
    const std::shared_ptr<AudioMonitor>& monitor() const { return monitor_; }
    const std::shared_ptr<NowPlayingMonitor>& nowPlaying() const { return nowPlaying_; }
    const std::shared_ptr<StateLogger>& logger() const { return logger_; }

  private:
    void setupStatusItem();
    void setupPanel();
    MenubarPanelActions panelActions();
    std::function<void(const std::string&)> copyAction();
    void followState();
    void stateDelivered(const std::optional<DeviceState>& state);
    void refreshStatusIcon();
    void panelPinnedChanged();
    void startSafetyNetTimer();
    void placePanel();
    void panelContentChanged();
    void renderPanel();
    void showPanelAgain();
    void installClickOutsideMonitor();
    void removeClickOutsideMonitor();
    StatusButton* statusButton() const;

    const AppDelegateSeams seams_;
    const std::shared_ptr<SettingsStore> settings_;
    const std::shared_ptr<AudioMonitor> monitor_;
    const std::shared_ptr<NowPlayingMonitor> nowPlaying_;
    std::shared_ptr<ReportCoordinator> coordinator_;
    const std::shared_ptr<StateLogger> logger_;
    std::unique_ptr<StatusItem> statusItem_;
    std::unique_ptr<MenubarPanel> panelContent_;
    std::unique_ptr<PanelWindow> panel_;
    Cancellable clickOutsideMonitor_;  // while it is installed
    Cancellable stateSubscription_;
    Cancellable safetyTimer_;
    bool renderingIsDue_ = false;
};

}  // namespace purlock
