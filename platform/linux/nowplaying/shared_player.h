#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "core/playback.h"
#include "platform/linux/nowplaying/mpris_players.h"
#include "source/now_playing_framework.h"

namespace purlock::host_linux {

/// The current player, as the bus thread last put it there, for readers on any thread: a fetch asks no player
/// and wakes no other thread.
class SharedPlayer {
  public:
    using Moment = std::chrono::steady_clock::time_point;

    /// One player's dictionary, and the process that it belongs to: never those of two players.
    struct Reading {
        NowPlayingDictionary dictionary;
        std::int32_t processIdentifier = 0;  // below 1: none
    };

    /// The address of the track, when it is another one than before.
    std::optional<std::string> setPlayer(std::optional<CurrentPlayer> player);

    /// Stores what is known of the file at that address; false when it is no longer the track's.
    bool setFile(const std::string& address, std::optional<PlayedFile> file);

    Reading read(Moment now) const;

    /// How often the player, its track or whether it plays has changed; a position that jumps is no change.
    std::uint64_t changes() const;

    /// The name that the player of that process gives itself; kept for the current player and the one before.
    std::optional<PlayerIdentity> identityOf(std::int32_t processIdentifier) const;

  private:
    using Identified = std::pair<std::int32_t, PlayerIdentity>;

    mutable std::mutex mutex_;  // guards all
    std::optional<CurrentPlayer> player_;
    std::uint64_t changes_ = 0;
    std::optional<PlayedFile> file_;  // of the player's track
    Identified identified_;
    Identified identifiedBefore_;
};

}  // namespace purlock::host_linux
