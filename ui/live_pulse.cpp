#include "ui/live_pulse.h"

#include <chrono>
#include <utility>

#include "base/number_text.h"
#include "ui/view_parts.h"

namespace purlock {

namespace {

constexpr std::chrono::milliseconds brightTime{450};
constexpr EaseOut fade{0.5};

}  // namespace

std::string timeAgo(WallTime lastTick, WallTime now) {
    const auto seconds = truncatedInteger(std::chrono::duration<double>(now - lastTick).count());
    return seconds < 1 ? "now" : std::to_string(seconds) + "s ago";
}

LivePulse::LivePulse(RunLoop& mainLoop, WallTime lastTick, std::function<void()> onChange)
    : mainLoop_(mainLoop), lastTick_(lastTick), onChange_(std::move(onChange)) {}

void LivePulse::setLastTick(WallTime tick) {
    if (std::exchange(lastTick_, tick) == tick) return;
    setBright(true);
    dimmings_.push_back(mainLoop_.postDelayed(brightTime, [this] {
        dimmings_.pop_front();  // they end in the order in which they began
        setBright(false);
    }));
}

void LivePulse::rest() {
    dimmings_.clear();
    bright_ = false;
}

void LivePulse::setBright(bool bright) {
    bright_ = bright;
    onChange_();
}

View LivePulse::body(WallTime now) const {
    View dot = element(Circle{6, accentGreen, {}, bright_ ? 0.95 : 0.35, fade});
    dot.help = "Live — last refresh " + timeAgo(lastTick_, now);
    return dot;
}

}  // namespace purlock
