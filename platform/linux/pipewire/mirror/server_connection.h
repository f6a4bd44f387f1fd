#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/pipewire/mirror/defaults_probe.h"
#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/mirror/session.h"
#include "platform/linux/pipewire/mirror/socket_watch.h"
#include "platform/linux/pipewire/rules/missed_default.h"

namespace purlock::host_linux {

/// Keeps a session with the audio server. After a loss it connects again. It asks again for a default device
/// whose change may have been missed.
///
/// Owned by the hardware layer; the loop's thread, but made and ended while that does not run.
class ServerConnection {
  public:
    struct Observers {
        std::function<void()> synced;         // as the session's
        std::function<void()> clocksChanged;  // as the session's
        std::function<void()> silent;         // as the session's
        std::function<void()> ended;          // there is no session any more
    };

    ServerConnection(pw_context* context, Observers observers);

    /// Null while there is none.
    Session* session() const { return session_.get(); }

    /// The number of the session in this run; those of different sessions differ.
    std::uint64_t number() const { return number_; }

  private:
    void connect();
    void connectLater();
    void socketAppeared();
    void endSession();
    void synced();
    void checkDefault();
    void confirmMissed();
    void askInSilence();

    pw_context* const context_;
    pw_loop* const loop_;
    const Observers observers_;
    SocketWatch socket_;
    LoopTimer reconnect_;
    LoopTimer confirm_;
    LoopTimer silence_;  // since a client connected
    DefaultsProbe probe_;
    LoopEvent sessionEnds_;  // a session must not end within its own observers
    std::unique_ptr<Session> session_;
    std::uint64_t number_ = 0;
    std::chrono::milliseconds delay_{0};
    std::optional<MissedDefault> missed_;  // as of the last sync
};

}  // namespace purlock::host_linux
