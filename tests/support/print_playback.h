#pragma once

#include <ostream>

#include "core/playback.h"

namespace purlock {

/// Names the fields when a test fails.
inline void PrintTo(const NowPlayingInfo& info, std::ostream* out) {
    const auto print = [out](const char* name, const auto& value) {
        *out << name << ' ';
        if (value) {
            *out << *value << ", ";
        } else {
            *out << "absent, ";
        }
    };
    print("title", info.title);
    print("artist", info.artist);
    print("album", info.album);
    print("bundle", info.appBundleID);
    print("name", info.appName);
    print("elapsed", info.elapsedSeconds);
    print("duration", info.durationSeconds);
    *out << (info.isPlaying ? "playing" : "not playing");
}

}  // namespace purlock
