#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/running_applications.h"
#include "core/source_claim.h"
#include "source/accessibility_tree.h"
#include "source/file_system.h"
#include "source/property_list_reader.h"

namespace purlock {

/// What the introspectors ask of the host. Each outlives the call.
struct IntrospectionSeams {
    FileSystem& files;
    PropertyListReader& propertyLists;
    RunningApplications& applications;
    AccessibilityTree& accessibility;
};

/// What an application's preference file says. A record without a tier: the search was stopped, no file may
/// be asked further.
struct Prefs {
    std::optional<std::string> tier;

    bool operator==(const Prefs&) const = default;
};

/// What a tier means; all absent when it is not recognised.
struct TierMeaning {
    std::optional<double> rate;  // Hz
    std::optional<std::uint32_t> bitDepth;
    std::optional<bool> lossless;
    std::optional<bool> hiRes;
    std::optional<std::string> codec;

    bool operator==(const TierMeaning&) const = default;
};

/// The tier that decides what is declared: the preference wins over the badge, which may be anything on the
/// screen.
inline const std::optional<std::string>& decidingTier(const std::optional<std::string>& configured,
                                                      const std::optional<std::string>& displayed) {
    return configured ? configured : displayed;
}

/// The claim of these parts.
inline SourceClaim makeClaim(SourceApp app, std::optional<std::string> configuredTier,
                             std::optional<std::string> displayedTier, TierMeaning meaning) {
    return {.app = app,
            .configuredTier = std::move(configuredTier),
            .displayedTier = std::move(displayedTier),
            .declaredRate = meaning.rate,
            .declaredBitDepth = meaning.bitDepth,
            .isLossless = meaning.lossless,
            .isHiRes = meaning.hiRes,
            .codec = std::move(meaning.codec)};
}

}  // namespace purlock
