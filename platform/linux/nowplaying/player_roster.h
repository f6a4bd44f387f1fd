#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/linux/nowplaying/player_properties.h"

namespace purlock::host_linux {

/// The well-known name of a media player begins with this (MPRIS 2.2, "Bus Name Policy").
inline constexpr std::string_view playerNamePrefix = "org.mpris.MediaPlayer2.";

/// What a reader of the now-playing information could see differ between two moments.
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
/// track changed last, else the one that came first. A player that only stands for others is not kept. A
/// player is the peer behind a unique name, which may own several well-known ones.
class PlayerRoster {
  public:
    /// More players are not kept; a session has a handful.
    static constexpr std::size_t maximumPlayers = 64;

    /// A player as far as it is known.
    struct Player {
        std::set<std::string> names;
        std::int32_t processIdentifier = 0;  // 0 while it is not known
        PlayerProperties properties;
        std::uint64_t arrived = 0;  // the moments, counted
        std::uint64_t startedPlaying = 0;
        std::uint64_t changed = 0;
    };

    enum class Arrival { added, known, refused };

    /// The name has a new owner, or none when `owner` is empty.
    Arrival setNameOwner(const std::string& name, const std::string& owner);

    bool contains(const std::string& owner) const { return players_.contains(owner); }

    void setProcessIdentifier(const std::string& owner, std::int32_t pid);

    /// Takes over what a player told; nothing for an unknown one.
    void updateProperties(const std::string& owner, const BusValue& changed);

    /// The player has left, whatever its names.
    void removeOwner(const std::string& owner) { players_.erase(owner); }

    void clear() { players_.clear(); }

    /// The current player's unique name; empty when there is none.
    std::string currentOwner() const;

    /// Null when there is no such player.
    const Player* find(const std::string& owner) const;

    /// How what a reader sees of the current player differs from what it saw at the last call.
    NowPlayingChanges takeChanges();

  private:
    /// What a reader sees of the current player.
    struct View {
        std::string owner;
        std::int32_t processIdentifier = 0;
        PlayerProperties properties;
    };

    void removeName(const std::string& name);
    View view() const;

    std::map<std::string, Player> players_;  // by unique name
    std::uint64_t now_ = 0;
    View seen_;
};

/// Whether the player of this well-known name repeats what other players say, or stands for one on another
/// machine: playerctl's daemon, and the phones that KDE Connect shows.
bool isProxyingPlayer(std::string_view name);

}  // namespace purlock::host_linux
