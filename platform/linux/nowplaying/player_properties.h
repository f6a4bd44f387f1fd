#pragma once

#include <optional>
#include <string>

#include "platform/linux/dbus/bus_reader.h"
#include "platform/linux/dbus/bus_value.h"

namespace purlock::host_linux {

// The properties of org.mpris.MediaPlayer2.Player, version 2.2 of the MPRIS D-Bus interface specification.
// Pure functions over what came from a stranger: a value of the wrong type is as if it were not there, and no
// text is longer than `longestPlayerText`. Any thread.

/// Bytes; what is longer is cut at a character.
inline constexpr std::size_t longestPlayerText = 4096;

/// Bytes; an address that is cut leads nowhere, so a longer one is absent.
inline constexpr std::size_t longestPlayerAddress = 3 * 4096;

/// The limits under which a player's messages are read: a flood of large ones must not keep the bus thread
/// busy.
inline constexpr BusReadLimits playerReadLimits{
    .textBytes = longestPlayerAddress + 4,  // so that one that was cut is seen to be too long
    .totalTextBytes = 128 * 1024,
    .values = 1000,
    .depth = 8,
    .longTexts = LongText::cut};

/// Texts are absent when missing or empty; the duration when it is not above 0.
struct PlayerTrack {
    std::optional<std::string> title;
    std::optional<std::string> artist;
    std::optional<std::string> album;
    std::optional<double> durationSeconds;
    std::optional<std::string> address{};  // where it is played from: a file's URL, or one of the network

    bool operator==(const PlayerTrack&) const = default;
};

struct PlayerProperties {
    bool isPlaying = false;
    bool isPaused = false;
    double rate = 1;  // as the player says it; 0 and below is no rate
    PlayerTrack track;

    bool operator==(const PlayerProperties&) const = default;

    /// True if there is anything that it plays or could go on with: a player that is merely open, stopped and
    /// without a track, has nothing.
    bool hasSomething() const;

    /// What the now-playing dictionary gives as the rate: 0 unless playing, and above 0 when playing.
    double playbackRate() const;
};

/// The track that a "Metadata" dictionary describes. Several artists are joined with ", "; a single text is
/// tolerated in place of their list.
PlayerTrack trackFromMetadata(const BusValue& metadata);

/// Takes over those properties that `changed`, a dictionary, has; the others stay.
void update(PlayerProperties& properties, const BusValue& changed);

/// The names of a player: the properties of org.mpris.MediaPlayer2.
struct PlayerIdentity {
    std::optional<std::string> name;
    std::optional<std::string> desktopID;  // its desktop file's name without the suffix

    bool operator==(const PlayerIdentity&) const = default;
};
PlayerIdentity identityFrom(const BusValue& properties);

/// A time in microseconds as seconds; absent when it is no number, or negative.
std::optional<double> secondsFromMicroseconds(const BusValue& value);

}  // namespace purlock::host_linux
