#include "ui/app_delegate.h"

#include <chrono>

namespace purlock {

namespace {

constexpr std::chrono::milliseconds safetyInterval{800};

}  // namespace

AppDelegate::AppDelegate(const AppDelegateSeams& seams)
    : seams_(seams),
      settings_(SettingsStore::shared()),
      monitor_(std::make_shared<AudioMonitor>(seams.audio, settings_)),
      nowPlaying_(std::make_shared<NowPlayingMonitor>(seams.nowPlaying)),
      logger_(StateLogger::shared()) {}

const std::shared_ptr<ReportCoordinator>& AppDelegate::coordinator() {
    if (!coordinator_) coordinator_ = ReportCoordinator::make(seams_.coordinator, monitor_, nowPlaying_);
    return coordinator_;
}

void AppDelegate::applicationDidFinishLaunching() {
    coordinator();
    monitor_->start();
    nowPlaying_->start();
    followState();
    startSafetyNetTimer();
}

void AppDelegate::followState() {
    const auto weak = weak_from_this();
    stateSubscription_ = monitor_->state().subscribe([weak, &loop = seams_.mainLoop](const auto& state) {
        loop.post([weak, state] {
            if (const auto self = weak.lock()) self->stateDelivered(state);
        });
    });
}

void AppDelegate::stateDelivered(const std::optional<DeviceState>& state) {
    StateSnapshot::shared()->write(state);
    if (state) logger_->record(*state);
}

void AppDelegate::startSafetyNetTimer() {
    safetyTimer_ = seams_.mainLoop.repeat(safetyInterval, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->monitor_->refreshState();
        self->nowPlaying_->refresh();
    });
}

}  // namespace purlock
