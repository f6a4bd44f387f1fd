#include "app/report_coordinator.h"

#include <chrono>
#include <string_view>
#include <utility>

#include "core/cause_engine.h"
#include "source/introspectors.h"
#include "source/played_file.h"
#include "source/source_app.h"

namespace purlock {

namespace {

constexpr std::chrono::milliseconds debounce{80};

/// Longer than the time from one refresh to the next, so that a report that is not urgent comes with it.
constexpr std::chrono::milliseconds tolerance{1000};

/// True if they differ in more than the position in the track, which moves all the time and is in no report.
bool differ(const std::optional<NowPlayingInfo>& first, const std::optional<NowPlayingInfo>& second) {
    if (!first || !second) return first.has_value() != second.has_value();
    NowPlayingInfo moved = *first;
    moved.elapsedSeconds = second->elapsedSeconds;
    return moved != *second;
}

/// The application that the user plays from: what the system calls the now-playing one, else the process that
/// is heard.
std::optional<std::string_view> sourceBundleID(const std::optional<NowPlayingInfo>& np,
                                               const std::optional<AudioProcessInfo>& process) {
    if (np && np->appBundleID) return *np->appBundleID;
    if (process && process->bundleID) return *process->bundleID;
    return std::nullopt;
}

/// The process that is heard, if it is the player's.
std::optional<std::int32_t> playerProcess(const NowPlayingInfo& np,
                                          const std::optional<AudioProcessInfo>& process) {
    if (!np.isPlaying || !process) return std::nullopt;
    const bool isTheSame =
        np.appBundleID ? np.appBundleID == process->bundleID : np.appName && np.appName == process->appName;
    return isTheSame ? std::optional(process->pid) : std::nullopt;
}

}  // namespace

std::shared_ptr<ReportCoordinator> ReportCoordinator::make(const ReportCoordinatorSeams& seams,
                                                           std::shared_ptr<AudioMonitor> audio,
                                                           std::shared_ptr<NowPlayingMonitor> nowPlaying) {
    std::shared_ptr<ReportCoordinator> coordinator(
        new ReportCoordinator(seams, std::move(audio), std::move(nowPlaying)));
    coordinator->followMonitors();
    return coordinator;
}

ReportCoordinator::ReportCoordinator(const ReportCoordinatorSeams& seams, std::shared_ptr<AudioMonitor> audio,
                                     std::shared_ptr<NowPlayingMonitor> nowPlaying)
    : seams_(seams), lastTick_(seams.clock.now()), audio_(std::move(audio)), np_(std::move(nowPlaying)) {}

void ReportCoordinator::followMonitors() {
    const auto weak = weak_from_this();
    stateSubscription_ = audio_->state().subscribe([weak](const auto&) {
        if (const auto self = weak.lock()) self->inputsChanged();
    });
    infoSubscription_ = np_->current().subscribe([weak](const std::optional<NowPlayingInfo>& info) {
        const auto self = weak.lock();
        if (!self) return;
        self->inputsChanged();
        self->seams_.mainLoop.post([weak, info] {
            if (const auto later = weak.lock()) later->mirror(info);
        });
    });
}

/// Starts the wait for quiet anew; what is current when it ends is what is judged.
void ReportCoordinator::inputsChanged() {
    const auto judge = [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->recompute(self->audio_->state().value(), self->np_->current().value());
        }
    };
    RunLoop& loop = seams_.mainLoop;
    quiet_ = isUrgent() ? loop.postDelayed(debounce, judge)
                        : loop.postDelayedWithTolerance(debounce, tolerance, judge);
}

bool ReportCoordinator::isUrgent() const {
    return objectWillChange_.isObserved() || audio_->state().value() != judgedState_ ||
           differ(np_->current().value(), judgedInfo_);
}

void ReportCoordinator::mirror(const std::optional<NowPlayingInfo>& info) {
    objectWillChange_.fire();
    nowPlaying_ = info;
}

void ReportCoordinator::recompute(const std::optional<DeviceState>& state,
                                  const std::optional<NowPlayingInfo>& np) {
    std::optional<AudioProcessInfo> process;
    if (state) process = ProcessAudio::currentSourceFor(state->deviceID, seams_.processAudio);
    const SourceApp app = sourceAppFromBundleID(sourceBundleID(np, process));
    auto claim = Introspectors::claimFor(app, seams_.introspection);
    if (!claim && np && np->playedFile) claim = claimOfPlayedFile(np, playerProcess(*np, process));
    auto report = CauseEngine::evaluate(state, np, process, claim, seams_.words);
    objectWillChange_.fire();
    report_ = std::move(report);
    judgedState_ = state;
    judgedInfo_ = np;
    objectWillChange_.fire();
    lastTick_.set(seams_.clock.now());
}

}  // namespace purlock
