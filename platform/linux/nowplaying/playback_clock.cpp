#include "platform/linux/nowplaying/playback_clock.h"

namespace purlock::host_linux {

void PlaybackClock::setPosition(std::optional<double> seconds, Moment now) {
    seconds_ = seconds;
    told_ = now;
}

void PlaybackClock::setRate(double rate, Moment now) {
    setPosition(positionAt(now), now);
    rate_ = rate;
}

std::optional<double> PlaybackClock::positionAt(Moment now) const {
    if (!seconds_) return std::nullopt;
    return *seconds_ + rate_ * std::chrono::duration<double>(now - told_).count();
}

}  // namespace purlock::host_linux
