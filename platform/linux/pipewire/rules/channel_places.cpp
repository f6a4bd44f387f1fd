#include "platform/linux/pipewire/rules/channel_places.h"

#include <spa/param/audio/raw.h>

#include <algorithm>
#include <array>
#include <utility>

namespace purlock::host_linux {

namespace {

bool holds(const ChannelPlaces& places, std::uint32_t place) {
    return std::find(places.begin(), places.end(), place) != places.end();
}

/// A place that says nothing about where the sound is to be heard.
bool isAnywhere(std::uint32_t place) {
    return place == SPA_AUDIO_CHANNEL_UNKNOWN || place == SPA_AUDIO_CHANNEL_NA ||
           (place >= SPA_AUDIO_CHANNEL_START_Aux && place <= SPA_AUDIO_CHANNEL_LAST_Aux);
}

bool isWithoutPlaces(const ChannelPlaces& places) {
    return std::all_of(places.begin(), places.end(), isAnywhere);
}

std::uint32_t standIn(std::uint32_t place) {
    constexpr std::array pairs = {std::pair{SPA_AUDIO_CHANNEL_SL, SPA_AUDIO_CHANNEL_RL},
                                  std::pair{SPA_AUDIO_CHANNEL_SR, SPA_AUDIO_CHANNEL_RR}};
    for (const auto& [side, rear] : pairs) {
        if (place == static_cast<std::uint32_t>(side)) return static_cast<std::uint32_t>(rear);
        if (place == static_cast<std::uint32_t>(rear)) return static_cast<std::uint32_t>(side);
    }
    return SPA_AUDIO_CHANNEL_UNKNOWN;
}

}  // namespace

bool arriveInPlace(const ChannelPlaces& from, const ChannelPlaces& to) {
    const bool isCopied = from.size() <= 1 && (from.empty() || from.front() == SPA_AUDIO_CHANNEL_MONO ||
                                               isAnywhere(from.front()));
    if (isCopied) return !to.empty();
    if (to.size() <= 1) return from.size() <= to.size();
    if (isWithoutPlaces(from) || isWithoutPlaces(to)) return from.size() <= to.size();
    return std::all_of(from.begin(), from.end(), [&](std::uint32_t place) {
        const std::uint32_t other = standIn(place);
        return holds(to, place) || (holds(to, other) && !holds(from, other));
    });
}

}  // namespace purlock::host_linux
