#include "platform/linux/nowplaying/player_properties.h"

#include <cmath>
#include <string_view>

namespace purlock::host_linux {

namespace {

constexpr double microsecondsPerSecond = 1e6;

std::optional<std::string> textOf(const BusValue* value) {
    const std::string* text = value != nullptr ? value->text() : nullptr;
    if (text == nullptr || text->empty() || text->size() > longestPlayerText) return std::nullopt;
    return *text;
}

std::optional<std::string> joinedTexts(const BusValue::List& list) {
    constexpr std::string_view separator = ", ";
    std::string joined;
    for (const BusValue& element : list) {
        const auto text = textOf(&element);
        if (!text) continue;
        if (joined.size() + separator.size() + text->size() > longestPlayerText) break;
        if (!joined.empty()) joined += separator;
        joined += *text;
    }
    return joined.empty() ? std::nullopt : std::optional(joined);
}

std::optional<std::string> artistsOf(const BusValue* value) {
    if (value != nullptr && value->list() != nullptr) return joinedTexts(*value->list());
    return textOf(value);
}

/// A number of any kind; players do not agree on one.
std::optional<double> numberOf(const BusValue& value) {
    if (const auto integer = value.integer()) return static_cast<double>(*integer);
    const auto real = value.real();
    return real && std::isfinite(*real) ? real : std::nullopt;
}

}  // namespace

double PlayerProperties::playbackRate() const {
    if (!isPlaying) return 0;
    return rate > 0 ? rate : 1;
}

std::optional<double> secondsFromMicroseconds(const BusValue& value) {
    const auto microseconds = numberOf(value);
    if (!microseconds || *microseconds < 0) return std::nullopt;
    return *microseconds / microsecondsPerSecond;
}

PlayerTrack trackFromMetadata(const BusValue& metadata) {
    PlayerTrack track;
    track.title = textOf(metadata.find("xesam:title"));
    track.artist = artistsOf(metadata.find("xesam:artist"));
    track.album = textOf(metadata.find("xesam:album"));
    if (const BusValue* length = metadata.find("mpris:length"))
        track.durationSeconds = secondsFromMicroseconds(*length);
    if (track.durationSeconds <= 0.0) track.durationSeconds.reset();  // a stream without an end
    return track;
}

void update(PlayerProperties& properties, const BusValue& changed) {
    if (const BusValue* status = changed.find("PlaybackStatus")) {
        properties.isPlaying = textOf(status) == "Playing";
    }
    if (const BusValue* rate = changed.find("Rate")) properties.rate = numberOf(*rate).value_or(1);
    if (const BusValue* metadata = changed.find("Metadata")) properties.track = trackFromMetadata(*metadata);
}

}  // namespace purlock::host_linux
