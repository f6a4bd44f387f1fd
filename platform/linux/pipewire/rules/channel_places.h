#pragma once

#include <cstdint>
#include <vector>

namespace purlock::host_linux {

/// The places of channels, SPA_AUDIO_CHANNEL_* of spa/param/audio/raw.h, in the order of the channels.
using ChannelPlaces = std::vector<std::uint32_t>;

/// True if PipeWire's channel mixer hands each channel on unchanged to the channel of its place. Captured
/// samples show the rules: a mono channel is copied to all others; a side channel stands in for a rear one
/// that is missing, and the other way round; what has no place goes by order; everything else is mixed. Pure.
bool arriveInPlace(const ChannelPlaces& from, const ChannelPlaces& to);

}  // namespace purlock::host_linux
