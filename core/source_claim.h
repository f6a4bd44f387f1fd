#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace purlock {

/// The source applications that the system knows.
enum class SourceApp { tidal, appleMusic, spotify, qobuz, other };

/// Every case, in declaration order.
inline constexpr std::array allSourceApps = {SourceApp::tidal, SourceApp::appleMusic, SourceApp::spotify,
                                             SourceApp::qobuz, SourceApp::other};

/// The name that data carries: "appleMusic".
std::string_view rawValue(SourceApp app);

/// The case with exactly this raw value (letter case counts); absent for any other text.
std::optional<SourceApp> sourceAppFromRawValue(std::string_view text);

/// The name that findings and stages show: "Apple Music"; an em dash for `other`.
std::string_view displayName(SourceApp app);

/// What a claim says beyond the rest when it is that of a file which a player plays.
struct FileClaim {
    std::optional<std::string> playerName;
    std::optional<std::uint32_t> channelCount;
    std::optional<double> bitsPerSecond;  // of a lossy file's stream

    /// The process in which the player is heard at this moment; its stream is compared with the file.
    std::optional<std::int32_t> playerProcess;

    bool operator==(const FileClaim&) const = default;
};

/// What the source application itself says about the quality that it delivers. Absent fields are not known.
struct SourceClaim {
    SourceApp app = SourceApp::other;
    std::optional<std::string> configuredTier;  // the tier set in its preferences
    std::optional<std::string> displayedTier;   // the badge that its window shows for the current track
    std::optional<double> declaredRate;         // Hz
    std::optional<std::uint32_t> declaredBitDepth;
    std::optional<bool> isLossless;
    std::optional<bool> isHiRes;
    std::optional<std::string> codec;
    std::optional<FileClaim> file{};  // absent for every service, and on macOS

    bool operator==(const SourceClaim&) const = default;
};

}  // namespace purlock
