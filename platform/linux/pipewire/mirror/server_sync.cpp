#include "platform/linux/pipewire/mirror/server_sync.h"

#include <utility>

namespace purlock::host_linux {

namespace {

/// A server that lives answers within a few milliseconds, also on a busy machine.
constexpr std::chrono::milliseconds longestSilence{3000};

/// A server that was only stopped answers as soon as it goes on; a connection that is stuck never does.
constexpr std::chrono::milliseconds silenceForGood{15000};

}  // namespace

ServerSync::ServerSync(pw_loop* loop, pw_core* core, Observers observers)
    : core_(core), observers_(std::move(observers)), silence_(loop, [this] { stayedSilent(); }) {}

void ServerSync::changed() {
    const bool isUnderWay = state_ != State::idle;
    check();
    state_ = isUnderWay ? State::outdated : State::changed;
}

void ServerSync::check() {
    if (state_ != State::idle) return;
    state_ = State::checking;
    ++sent_;
    sequence_ = pw_core_sync(core_, PW_ID_CORE, 0);
    silence_.arm(longestSilence);
}

void ServerSync::done(int sequence) {
    if (state_ == State::idle || sequence != sequence_) return;
    silence_.disarm();
    const State answered = std::exchange(state_, State::idle);
    const bool wasSilent = std::exchange(response_, Response::prompt) == Response::silent;
    const bool isNews = observers_.done(sent_);
    // A change that came after the question may belong to one that comes after the answer.
    if (answered == State::outdated) changed();
    if (answered != State::checking || isNews || wasSilent) observers_.synced();
}

void ServerSync::stayedSilent() {
    if (std::exchange(response_, Response::silent) == Response::silent) return observers_.lost();
    silence_.arm(silenceForGood);
    observers_.silent();
}

}  // namespace purlock::host_linux
