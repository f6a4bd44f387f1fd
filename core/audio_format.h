#pragma once

#include <cstdint>
#include <string>

#include "base/four_char_code.h"

namespace purlock {

/// Bits of `AudioFormat::formatFlags`, as CoreAudio's AudioStreamBasicDescription has them.
inline constexpr std::uint32_t formatFlagIsFloat = 1;
inline constexpr std::uint32_t formatFlagIsBigEndian = 2;
inline constexpr std::uint32_t formatFlagIsSignedInteger = 4;
inline constexpr std::uint32_t formatFlagIsPacked = 8;

/// The `formatID` of linear PCM.
inline constexpr std::uint32_t formatLinearPCM = fourCharCode("lpcm");

/// One stream format.
struct AudioFormat {
    double sampleRate = 0;  // frames per second, Hz
    std::uint32_t bitsPerChannel = 0;
    std::uint32_t channelsPerFrame = 0;
    std::uint32_t formatFlags = 0;
    std::uint32_t formatID = 0;

    /// "96.0 kHz · 24-bit · 2ch". Stops the process on a rate below 1000 Hz that has no integer form.
    std::string summary() const;

    /// "Float32", "Int24", or "Fmt16" where neither flag is set.
    std::string formatLabel() const;

    /// The raw PCM bit rate: "4.61 Mbps", "128 kbps".
    std::string bitrateLabel() const;

    /// The raw PCM bit rate as a number, bit/s.
    double bitsPerSecond() const;

    bool operator==(const AudioFormat&) const = default;
};

}  // namespace purlock
