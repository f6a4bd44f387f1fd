#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace purlock {

/// One process that has an audio output object with the operating system.
struct AudioProcessInfo {
    std::int32_t pid = 0;
    std::optional<std::string> bundleID;
    std::optional<std::string> appName;
    bool isRunningOutput = false;  // it produces output at this moment

    bool operator==(const AudioProcessInfo&) const = default;
};

/// The audio file that a player plays, as the file itself says. A host that cannot know has none.
struct PlayedFile {
    std::string codec;                      // "FLAC"
    std::optional<double> sampleRate;       // Hz; of a DSD file that of its single bits
    std::optional<std::uint32_t> bitDepth;  // absent where the codec has none, as lossy ones
    std::optional<std::uint32_t> channelCount;
    std::optional<double> bitsPerSecond;  // of the file's own stream, on average
    bool isLossless = false;

    bool operator==(const PlayedFile&) const = default;
};

/// The system's now-playing metadata.
struct NowPlayingInfo {
    std::optional<std::string> title;
    std::optional<std::string> artist;
    std::optional<std::string> album;
    std::optional<std::string> appBundleID;  // of the application that owns the now-playing session
    std::optional<std::string> appName;
    bool isPlaying = false;
    std::optional<double> elapsedSeconds;
    std::optional<double> durationSeconds;
    std::optional<PlayedFile> playedFile{};  // absent on macOS, and while it is not known

    bool operator==(const NowPlayingInfo&) const = default;
};

}  // namespace purlock
