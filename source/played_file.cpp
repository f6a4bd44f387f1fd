#include "source/played_file.h"

#include <cmath>
#include <string>
#include <string_view>
#include <variant>

namespace purlock {

namespace {

constexpr const char* codecKey = "org.purlock.Purlock.PlayedFile.Codec";
constexpr const char* rateKey = "org.purlock.Purlock.PlayedFile.SampleRate";
constexpr const char* depthKey = "org.purlock.Purlock.PlayedFile.BitDepth";
constexpr const char* channelsKey = "org.purlock.Purlock.PlayedFile.ChannelCount";
constexpr const char* bitsPerSecondKey = "org.purlock.Purlock.PlayedFile.BitsPerSecond";
constexpr const char* losslessKey = "org.purlock.Purlock.PlayedFile.IsLossless";

constexpr double largestNumber = 1e12;

std::optional<double> numberOf(const NowPlayingDictionary& dictionary, std::string_view key) {
    const auto entry = dictionary.find(key);
    const auto* number = entry == dictionary.end() ? nullptr : std::get_if<double>(&entry->second);
    if (number == nullptr || !(*number > 0) || *number > largestNumber) return std::nullopt;
    return *number;
}

std::optional<std::uint32_t> countOf(const NowPlayingDictionary& dictionary, std::string_view key) {
    constexpr double largestCount = 1000;
    const auto number = numberOf(dictionary, key);
    if (!number || *number < 1 || *number > largestCount) return std::nullopt;
    return static_cast<std::uint32_t>(*number);
}

bool isHiRes(const PlayedFile& file) {
    constexpr double ordinaryRate = 48000;
    constexpr std::uint32_t ordinaryDepth = 16;
    return file.isLossless &&
           (file.sampleRate.value_or(0) > ordinaryRate || file.bitDepth.value_or(0) > ordinaryDepth);
}

}  // namespace

void addPlayedFile(NowPlayingDictionary& dictionary, const PlayedFile& file) {
    dictionary.insert_or_assign(codecKey, file.codec);
    dictionary.insert_or_assign(losslessKey, file.isLossless ? 1.0 : 0.0);
    const auto put = [&](const char* key, const auto& number) {
        if (number) dictionary.insert_or_assign(key, static_cast<double>(*number));
    };
    put(rateKey, file.sampleRate);
    put(depthKey, file.bitDepth);
    put(channelsKey, file.channelCount);
    put(bitsPerSecondKey, file.bitsPerSecond);
}

std::optional<PlayedFile> playedFileOf(const NowPlayingDictionary& dictionary) {
    const auto codec = dictionary.find(std::string_view(codecKey));
    const auto* name = codec == dictionary.end() ? nullptr : std::get_if<std::string>(&codec->second);
    if (name == nullptr || name->empty()) return std::nullopt;
    return PlayedFile{.codec = *name,
                      .sampleRate = numberOf(dictionary, rateKey),
                      .bitDepth = countOf(dictionary, depthKey),
                      .channelCount = countOf(dictionary, channelsKey),
                      .bitsPerSecond = numberOf(dictionary, bitsPerSecondKey),
                      .isLossless = numberOf(dictionary, losslessKey).has_value()};
}

std::optional<SourceClaim> claimOfPlayedFile(const std::optional<NowPlayingInfo>& nowPlaying,
                                             std::optional<std::int32_t> playerProcess) {
    if (!nowPlaying || !nowPlaying->playedFile) return std::nullopt;
    const PlayedFile& file = *nowPlaying->playedFile;
    const bool isSingleBits = file.bitDepth == 1U;
    SourceClaim claim;
    if (!isSingleBits) claim.declaredRate = file.sampleRate;
    if (!isSingleBits) claim.declaredBitDepth = file.bitDepth;
    claim.isLossless = file.isLossless;
    claim.isHiRes = isHiRes(file);
    claim.codec = file.codec;
    claim.file = FileClaim{nowPlaying->appName, file.channelCount, file.bitsPerSecond, playerProcess};
    return claim;
}

}  // namespace purlock
