#include "platform/linux/nowplaying/player_properties.h"

#include <cmath>
#include <string_view>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr double microsecondsPerSecond = 1e6;

std::optional<std::string> textOf(const BusValue* value, std::size_t longest = longestPlayerText) {
    const std::string* text = value != nullptr ? value->text() : nullptr;
    if (text == nullptr || text->empty()) return std::nullopt;
    return std::string(firstCharacters(*text, longest));
}

std::optional<std::string> addressOf(const BusValue* value) {
    const std::string* text = value != nullptr ? value->text() : nullptr;
    if (text == nullptr || text->empty() || text->size() > longestPlayerAddress) return std::nullopt;
    return *text;
}

std::optional<std::string> joinedTexts(const BusValue::List& list) {
    constexpr std::string_view separator = ", ";
    std::string joined;
    for (const BusValue& element : list) {
        const auto text = textOf(&element);
        if (!text || joined.size() >= longestPlayerText) continue;
        if (!joined.empty()) joined += separator;
        joined += *text;
    }
    if (joined.empty()) return std::nullopt;
    return std::string(firstCharacters(joined, longestPlayerText));
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

bool PlayerProperties::hasSomething() const {
    return isPlaying || isPaused || track.title || track.artist || track.album || track.address;
}

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
    track.address = addressOf(metadata.find("xesam:url"));
    if (const BusValue* length = metadata.find("mpris:length")) {
        track.durationSeconds = secondsFromMicroseconds(*length);
    }
    if (track.durationSeconds <= 0.0) track.durationSeconds.reset();  // a stream without an end
    return track;
}

void update(PlayerProperties& properties, const BusValue& changed) {
    if (const BusValue* status = changed.find("PlaybackStatus")) {
        properties.isPlaying = textOf(status) == "Playing";
        properties.isPaused = textOf(status) == "Paused";
    }
    if (const BusValue* rate = changed.find("Rate")) properties.rate = numberOf(*rate).value_or(1);
    if (const BusValue* metadata = changed.find("Metadata")) properties.track = trackFromMetadata(*metadata);
}

PlayerIdentity identityFrom(const BusValue& properties) {
    constexpr std::size_t longestName = 256;
    constexpr std::string_view suffix = ".desktop";
    PlayerIdentity identity{textOf(properties.find("Identity"), longestName),
                            textOf(properties.find("DesktopEntry"), longestName)};
    if (identity.desktopID && identity.desktopID->ends_with(suffix)) {
        identity.desktopID->resize(identity.desktopID->size() - suffix.size());
    }
    return identity;
}

}  // namespace purlock::host_linux
