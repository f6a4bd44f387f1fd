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

    bool operator==(const NowPlayingInfo&) const = default;
};

}  // namespace purlock
