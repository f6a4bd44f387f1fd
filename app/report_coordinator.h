#pragma once

#include <memory>
#include <optional>

#include "audio/audio_monitor.h"
#include "audio/process_audio.h"
#include "base/clock.h"
#include "base/published.h"
#include "base/run_loop.h"
#include "core/report.h"
#include "core/system_words.h"
#include "source/introspection.h"
#include "source/now_playing_monitor.h"

namespace purlock {

/// What the report coordinator asks of the host. All of it outlives the coordinator.
struct ReportCoordinatorSeams {
    RunLoop& mainLoop;
    const Clock& clock;
    ProcessAudioSeams processAudio;
    IntrospectionSeams introspection;
    SystemWords words = {};
};

/// Where the inputs meet the cause engine: whenever the device's state or what plays is published and 80 ms
/// of quiet have followed, it gathers the playing process and its claim, and publishes a new report.
///
/// While nobody observes it and its inputs are those of the last report, the next one may come up to a second
/// later: its timer does not wake the main loop, but comes with the loop's next work.
///
/// Made once by the application; main thread only. Reports are not compared: every recomputation gives a new
/// one and a new `lastTick`. Observers subscribe to `objectWillChange` and read again once it has fired.
class ReportCoordinator : public std::enable_shared_from_this<ReportCoordinator> {
  public:
    /// Makes a coordinator that follows both monitors. The first report comes one period of quiet later.
    static std::shared_ptr<ReportCoordinator> make(const ReportCoordinatorSeams& seams,
                                                   std::shared_ptr<AudioMonitor> audio,
                                                   std::shared_ptr<NowPlayingMonitor> nowPlaying);

    ReportCoordinator(const ReportCoordinator&) = delete;
    ReportCoordinator& operator=(const ReportCoordinator&) = delete;
    ~ReportCoordinator() = default;

    /// Fires before `report`, `nowPlaying` or `lastTick` changes.
    const Signal& objectWillChange() const { return objectWillChange_; }

    const SignalPathReport& report() const { return report_; }

    /// What plays, as last published; it runs ahead of the report by the time of quiet.
    const std::optional<NowPlayingInfo>& nowPlaying() const { return nowPlaying_; }

    /// When the report was last computed; at first, when the coordinator was made.
    const Published<WallTime>& lastTick() const { return lastTick_; }

  private:
    ReportCoordinator(const ReportCoordinatorSeams& seams, std::shared_ptr<AudioMonitor> audio,
                      std::shared_ptr<NowPlayingMonitor> nowPlaying);

    void followMonitors();
    void inputsChanged();
    bool isUrgent() const;
    void mirror(const std::optional<NowPlayingInfo>& info);
    void recompute(const std::optional<DeviceState>& state, const std::optional<NowPlayingInfo>& np);

    const ReportCoordinatorSeams seams_;
    Signal objectWillChange_;
    SignalPathReport report_;
    std::optional<NowPlayingInfo> nowPlaying_;
    Published<WallTime> lastTick_;
    std::optional<DeviceState> judgedState_;  // the inputs of the report
    std::optional<NowPlayingInfo> judgedInfo_;
    const std::shared_ptr<AudioMonitor> audio_;
    const std::shared_ptr<NowPlayingMonitor> np_;
    Cancellable stateSubscription_;
    Cancellable infoSubscription_;
    Cancellable quiet_;  // runs while a recomputation is due
};

}  // namespace purlock
