#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/nowplaying/playback_clock.h"
#include "platform/linux/nowplaying/player_properties.h"

namespace purlock::host_linux {

/// The well-known name of a media player begins with this (MPRIS 2.2, "Bus Name Policy").
inline constexpr std::string_view playerNamePrefix = "org.mpris.MediaPlayer2.";

/// The differences between two moments that a reader of the now-playing information could see.
struct NowPlayingChanges {
    bool application = false;
    bool information = false;
    bool playing = false;

    bool any() const { return application || information || playing; }
    bool operator==(const NowPlayingChanges&) const = default;
};

/// The media players of the session and which of them is the current one. Pure bookkeeping, no bus; on one
/// thread.
///
/// Of the players that play, the one that started last is current; when none plays, the one whose state or
/// track changed last, else the one that came first. A player that is merely open is never current: one that
/// has told nothing yet, or that is stopped and has no track. A player that does not answer counts as one
/// that does not play. A player that only stands for others is not kept. A player is the peer behind a unique
/// name, which may own several well-known ones.
class PlayerRoster {
  public:
    /// More players are not kept; a session has a handful. One that comes when the roster is full takes the
    /// place of one that is merely open, else of one that does not play.
    static constexpr std::size_t maximumPlayers = 64;

    /// A player as far as it is known.
    struct Player {
        std::set<std::string> names;
        std::int32_t processIdentifier = 0;  // 0 while it is not known
        PlayerIdentity identity;
        PlayerProperties properties;
        PlaybackClock clock;
        bool isPositionWanted = true;  // what the clock says is not the player's own word for this track
        bool isSilent = false;         // it has not answered
        std::uint64_t arrived = 0;     // the moments, counted
        std::uint64_t startedPlaying = 0;
        std::uint64_t changed = 0;

        bool isPlaying() const { return properties.isPlaying && !isSilent; }
        double playbackRate() const { return isSilent ? 0 : properties.playbackRate(); }
    };

    using Clock = std::chrono::steady_clock;
    using Moment = Clock::time_point;

    enum class Arrival { added, known, refused };

    /// The name has a new owner, or none when `owner` is empty.
    Arrival setNameOwner(const std::string& name, const std::string& owner);

    bool contains(const std::string& owner) const { return players_.contains(owner); }
    bool isFull() const { return players_.size() >= maximumPlayers; }
    std::vector<std::string> owners() const;

    void setProcessIdentifier(const std::string& owner, std::int32_t pid);

    void setIdentity(const std::string& owner, PlayerIdentity identity);

    /// Takes over what a player told at that moment; nothing for an unknown one.
    void updateProperties(const std::string& owner, const BusValue& changed, Moment now = Clock::now());

    /// The position in the track that the player told; absent when it did not tell one.
    void setPosition(const std::string& owner, std::optional<double> seconds, Moment now = Clock::now());

    /// True if the player has stopped to answer.
    void setSilent(const std::string& owner, bool isSilent, Moment now = Clock::now());

    /// The player has left, with all of its names.
    void removeOwner(const std::string& owner) { players_.erase(owner); }

    void clear() { players_.clear(); }

    /// The current player's unique name; empty when there is none.
    std::string currentOwner() const;

    /// Null when there is no such player.
    const Player* find(const std::string& owner) const;

    /// How what a reader sees of the current player differs from what it saw at the last call.
    NowPlayingChanges takeChanges();

  private:
    /// The current player as a reader sees it.
    struct Current {
        std::string owner;
        std::int32_t processIdentifier = 0;
        PlayerIdentity identity;
        PlayerTrack track;
        double playbackRate = 0;
    };

    bool makeRoom();
    void removeName(const std::string& name);
    Current current() const;

    std::map<std::string, Player> players_;  // by unique name
    std::uint64_t now_ = 0;
    Current seen_;
};

/// True if the player of this well-known name repeats what other players say, or stands for one on another
/// machine: playerctl's daemon, KDE's integration of browsers, which are players themselves, and the phones
/// that KDE Connect shows.
bool isProxyingPlayer(std::string_view name);

}  // namespace purlock::host_linux
