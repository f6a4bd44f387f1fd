#pragma once

#include <memory>
#include <string>

#include "tests/host-linux/nowplaying/now_playing_session.h"
#include "tests/host-linux/nowplaying/scripted_player.h"
#include "tests/support/private_bus.h"

namespace purlock::test {

// What the tests of players share: two tracks, and a session with one player.

inline const ScriptedPlayer::Track song{"Song", {"Singer", "Choir"}, "Record", 180'500'000};
inline const ScriptedPlayer::Track next{"Next", {"Singer"}, "Record", 60'000'000};

inline std::string titleOf(const NowPlayingSession& session) {
    return session.info() ? session.info()->title.value_or("") : "nothing";
}

/// What is published, without the position, which runs while a player plays.
inline NowPlayingInfo still(const NowPlayingSession& session) {
    NowPlayingInfo info = session.info().value_or(NowPlayingInfo{});
    info.elapsedSeconds.reset();
    return info;
}

/// True if a position that was this one at some moment of the test is shown.
inline bool showsAbout(const NowPlayingSession& session, double seconds) {
    const double shown = session.info() ? session.info()->elapsedSeconds.value_or(-1) : -1;
    return shown >= seconds && shown < seconds + 5;
}

/// A session with one player that plays `song`.
struct OnePlayer {
    OnePlayer() {
        player.setStatus("Playing");
        player.setTrack(song);
        player.setPosition(30'250'000);
        session = std::make_unique<NowPlayingSession>(bus.address());
    }

    bool showsSong() {
        return session->turnUntil(
            [&] { return titleOf(*session) == "Song" && session->info()->appBundleID; });
    }

    PrivateBus bus;
    ScriptedPlayer player{bus.address(), {"scripted"}};
    std::unique_ptr<NowPlayingSession> session;
};

}  // namespace purlock::test
