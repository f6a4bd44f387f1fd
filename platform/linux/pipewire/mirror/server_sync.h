#pragma once

#include <cstdint>
#include <functional>

#include "platform/linux/pipewire/mirror/handles.h"

namespace purlock::host_linux {

/// The syncs of one session. The server answers a sync with `done` after everything that it was asked or had
/// to tell before. However long a burst of changes is, one sync is under way at a time.
///
/// Owned by a session; the loop's thread.
class ServerSync {
  public:
    struct Observers {
        // The sync of this number is done. The result says whether that has changed the mirror.
        std::function<bool(std::uint64_t)> done;
        std::function<void()> synced;  // the mirror has changed and is whole, or the server answers again
        std::function<void()> silent;  // the server owes an answer for too long
        std::function<void()> lost;    // the server has been silent for good
    };

    ServerSync(pw_loop* loop, pw_core* core, Observers observers);

    /// The mirror has changed, or will when an answer has come.
    void changed();

    /// Has the server prove that it lives.
    void check();

    /// The core's event `done`.
    void done(int sequence);

    /// The number of the next sync. When it is done, everything that is asked now has been answered too.
    std::uint64_t next() const { return sent_ + 1; }

    /// True if the server has answered since the connection was made, and owes no answer for too long.
    bool isResponding() const { return response_ == Response::prompt; }

  private:
    enum class State {
        idle,
        checking,  // a sync is under way, and nothing has changed
        changed,   // a sync is under way that follows all changes
        outdated,  // a sync is under way, and something has changed after it
    };
    enum class Response { none, prompt, silent };

    void stayedSilent();

    pw_core* const core_;
    const Observers observers_;
    State state_ = State::idle;
    Response response_ = Response::none;
    std::uint64_t sent_ = 0;
    int sequence_ = 0;  // of the last one
    LoopTimer silence_;
};

}  // namespace purlock::host_linux
