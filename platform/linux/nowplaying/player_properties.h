#pragma once

#include <optional>
#include <string>

#include "platform/linux/dbus/bus_reader.h"
#include "platform/linux/dbus/bus_value.h"

namespace purlock::host_linux {

// What a media player says of itself: the properties of org.mpris.MediaPlayer2.Player, version 2.2 of the
// MPRIS D-Bus interface specification. Pure functions over what came from a stranger: a value of the wrong
// type is as if it were not there, and no text is longer than `longestPlayerText`. Any thread.

/// Bytes; a longer text is none at all, and a list of artists ends before it.
inline constexpr std::size_t longestPlayerText = 4096;

/// The limits under which a player's messages are read: a flood of large ones must not keep the bus thread
/// busy.
inline constexpr BusReadLimits playerReadLimits{
    .textBytes = longestPlayerText, .totalTextBytes = 64 * 1024, .values = 1000, .depth = 8};

/// Texts are absent when missing or empty; the duration when it is not above 0.
struct PlayerTrack {
    std::optional<std::string> title;
    std::optional<std::string> artist;
    std::optional<std::string> album;
    std::optional<double> durationSeconds;

    bool operator==(const PlayerTrack&) const = default;
};

struct PlayerProperties {
    bool isPlaying = false;
    double rate = 1;  // as the player says it; 0 and below is no rate
    PlayerTrack track;

    bool operator==(const PlayerProperties&) const = default;

    /// What the now-playing dictionary gives as the rate: 0 unless playing, and above 0 when playing.
    double playbackRate() const;
};

/// The track that a "Metadata" dictionary describes. Several artists are joined with ", "; a single text is
/// tolerated in place of their list.
PlayerTrack trackFromMetadata(const BusValue& metadata);

/// Takes over those properties that `changed`, a dictionary, has; the others stay.
void update(PlayerProperties& properties, const BusValue& changed);

/// A time in microseconds as seconds; absent when it is no number, or negative.
std::optional<double> secondsFromMicroseconds(const BusValue& value);

}  // namespace purlock::host_linux
