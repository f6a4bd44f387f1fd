#pragma once

#include <optional>

#include "core/playback.h"
#include "core/source_claim.h"
#include "source/now_playing_framework.h"

namespace purlock {

// The played file's way from the host to the cause engine. Pure functions; any thread.

/// Adds to a now-playing dictionary what is known of the played file, under keys of this program's own: the
/// framework's dictionary on macOS has none of them.
void addPlayedFile(NowPlayingDictionary& dictionary, const PlayedFile& file);

/// Absent when the dictionary names no codec; a number that no file can have is absent.
std::optional<PlayedFile> playedFileOf(const NowPlayingDictionary& dictionary);

/// What the played file claims. `playerProcess` is as in `FileClaim`. Absent when no file is known.
///
/// A file of single bits (DSD) declares neither rate nor depth: what a player makes of it cannot be compared
/// with them.
std::optional<SourceClaim> claimOfPlayedFile(const std::optional<NowPlayingInfo>& nowPlaying,
                                             std::optional<std::int32_t> playerProcess);

}  // namespace purlock
