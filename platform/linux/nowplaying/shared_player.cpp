#include "platform/linux/nowplaying/shared_player.h"

#include <algorithm>
#include <string_view>

#include "base/text.h"
#include "platform/linux/nowplaying/direction_isolation.h"
#include "platform/linux/playedfile/file_url.h"
#include "source/played_file.h"

namespace purlock::host_linux {

namespace {

std::optional<std::string> isolated(const std::optional<std::string>& text) {
    return text ? std::optional(isolatedText(*text)) : std::nullopt;
}

/// A file without tags is known by its name.
std::optional<std::string> fileName(const PlayerTrack& track) {
    const auto path = track.address ? localPathOf(*track.address) : std::nullopt;
    if (!path) return std::nullopt;
    const std::string name = path->substr(path->find_last_of('/') + 1);
    return name.empty() ? std::nullopt : std::optional(wellFormed(name));
}

std::optional<double> positionOf(const CurrentPlayer& player, SharedPlayer::Moment now) {
    auto position = player.clock.positionAt(now);
    if (position && player.track.durationSeconds) {
        *position = std::min(*position, *player.track.durationSeconds);
    }
    return position;
}

NowPlayingDictionary dictionaryOf(const CurrentPlayer& player, SharedPlayer::Moment now) {
    NowPlayingDictionary dictionary;
    const PlayerTrack& track = player.track;
    const auto put = [&](const char* key, const auto& value) {
        if (value) dictionary.emplace(key, *value);
    };
    put("kMRMediaRemoteNowPlayingInfoTitle", isolated(track.title ? track.title : fileName(track)));
    put("kMRMediaRemoteNowPlayingInfoArtist", isolated(track.artist));
    put("kMRMediaRemoteNowPlayingInfoAlbum", isolated(track.album));
    put("kMRMediaRemoteNowPlayingInfoElapsedTime", positionOf(player, now));
    put("kMRMediaRemoteNowPlayingInfoDuration", track.durationSeconds);
    put("kMRMediaRemoteNowPlayingInfoPlaybackRate", std::optional(player.playbackRate));
    return dictionary;
}

bool isAnother(const std::optional<CurrentPlayer>& before, const std::optional<CurrentPlayer>& now) {
    if (!before || !now) return before.has_value() != now.has_value();
    return before->processIdentifier != now->processIdentifier || before->track != now->track ||
           before->playbackRate != now->playbackRate;
}

}  // namespace

std::optional<std::string> SharedPlayer::setPlayer(std::optional<CurrentPlayer> player) {
    const std::lock_guard lock(mutex_);
    if (isAnother(player_, player)) ++changes_;
    const auto addressBefore = player_ ? player_->track.address : std::nullopt;
    player_ = std::move(player);
    if (player_ && identified_.first != player_->processIdentifier) {
        identifiedBefore_ = std::move(identified_);
        identified_.first = player_->processIdentifier;
    }
    if (player_) identified_.second = player_->identity;
    auto address = player_ ? player_->track.address : std::nullopt;
    if (address == addressBefore) return std::nullopt;
    file_.reset();
    return address;
}

bool SharedPlayer::setFile(const std::string& address, std::optional<PlayedFile> file) {
    const std::lock_guard lock(mutex_);
    if (!player_ || player_->track.address != address) return false;
    file_ = std::move(file);
    return true;
}

std::uint64_t SharedPlayer::changes() const {
    const std::lock_guard lock(mutex_);
    return changes_;
}

SharedPlayer::Reading SharedPlayer::read(Moment now) const {
    const std::lock_guard lock(mutex_);
    if (!player_) return {};
    Reading reading{dictionaryOf(*player_, now), player_->processIdentifier};
    if (file_) addPlayedFile(reading.dictionary, *file_);
    return reading;
}

std::optional<PlayerIdentity> SharedPlayer::identityOf(std::int32_t processIdentifier) const {
    const std::lock_guard lock(mutex_);
    for (const Identified& each : {identified_, identifiedBefore_}) {
        if (processIdentifier > 0 && each.first == processIdentifier) return each.second;
    }
    return std::nullopt;
}

}  // namespace purlock::host_linux
