#include "platform/linux/pipewire/mirror/server_connection.h"

#include <algorithm>
#include <utility>

namespace purlock::host_linux {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds firstDelay = 25ms;
constexpr std::chrono::milliseconds longestDelay = 30s;      // while the socket's folder is watched
constexpr std::chrono::milliseconds longestBlindDelay = 1s;  // while it cannot be
constexpr std::chrono::milliseconds untilListening = 5ms;    // from the socket's appearance
constexpr std::chrono::milliseconds missedLasts = 150ms;
constexpr std::chrono::milliseconds silenceAfterClient = 5s;

}  // namespace

ServerConnection::ServerConnection(pw_context* context, Observers observers)
    : context_(context),
      loop_(pw_context_get_main_loop(context)),
      observers_(std::move(observers)),
      socket_(loop_, [this] { socketAppeared(); }),
      reconnect_(loop_, [this] { connect(); }),
      confirm_(loop_, [this] { confirmMissed(); }),
      silence_(loop_, [this] { askInSilence(); }),
      probe_(context, loop_,
             [this](std::optional<std::string> name) {
                 if (session_) session_->setDefaultSinkName(std::move(name));
             }),
      sessionEnds_(loop_, [this] { endSession(); }) {
    reconnect_.arm(0ms);
}

void ServerConnection::connect() {
    if (session_) return;
    session_ = Session::connect(context_, {.synced = [this] { synced(); },
                                           .clocksChanged = observers_.clocksChanged,
                                           .clientConnected = [this] { silence_.arm(silenceAfterClient); },
                                           .silent = observers_.silent,
                                           .lost = [this] { sessionEnds_.signal(); }});
    if (session_) {
        ++number_;
    } else {
        connectLater();
    }
}

void ServerConnection::connectLater() {
    delay_ = std::clamp(delay_ * 2, firstDelay, socket_.isWatching() ? longestDelay : longestBlindDelay);
    reconnect_.arm(delay_);
}

void ServerConnection::socketAppeared() {
    if (session_) return;
    delay_ = 0ms;
    reconnect_.arm(untilListening);
}

void ServerConnection::endSession() {
    if (!session_) return;
    session_.reset();
    probe_.forget();
    observers_.ended();
    connectLater();
}

void ServerConnection::synced() {
    delay_ = 0ms;
    socket_.stop();
    checkDefault();
    observers_.synced();
}

/// The session manager moves streams a moment before or after it names another default.
void ServerConnection::checkDefault() {
    auto missed = missedDefault(session_->graph());
    if (missed == missed_) return;
    missed_ = std::move(missed);
    if (missed_) confirm_.arm(missedLasts);
}

void ServerConnection::confirmMissed() {
    if (session_ && missedDefault(session_->graph()) == missed_) probe_.ask();
}

/// While nothing plays, no link shows a default that was missed.
void ServerConnection::askInSilence() {
    if (session_ && !session_->graph().isAnyRunning()) probe_.ask();
}

}  // namespace purlock::host_linux
