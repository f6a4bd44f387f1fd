#include "source/tidal_introspector.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <variant>

#include "base/text.h"
#include "source/accessibility_scraper.h"

namespace purlock::TidalIntrospector {

namespace {

constexpr std::string_view scrapedBundleID = "com.tidal.desktop";
constexpr std::array<std::string_view, 6> badgePatterns = {"HI-RES LOSSLESS", "HI-RES", "MAX",
                                                           "LOSSLESS",        "HIGH",   "NORMAL"};

constexpr std::array<std::string_view, 2> preferenceFiles = {
    "~/Library/Preferences/com.tidal.desktop.plist",
    "~/Library/Containers/com.tidal.desktop/Data/Library/Preferences/com.tidal.desktop.plist",
};
constexpr std::array<std::string_view, 4> qualityKeys = {
    "audioQuality",
    "streamingQuality",
    "preferredAudioQuality",
    "playback.quality",
};
/// By the integer that stands for them.
constexpr std::array<std::string_view, 4> tierNames = {"NORMAL", "HIGH", "LOSSLESS", "HI-RES LOSSLESS"};

/// The record that a key's value gives; absent when the search goes on with the next key.
std::optional<Prefs> prefsFromValue(const PropertyListValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return Prefs{*text};
    const auto* number = std::get_if<std::int64_t>(&value);
    if (number == nullptr) return std::nullopt;
    if (*number < 0 || std::cmp_greater_equal(*number, tierNames.size())) return Prefs{};
    return Prefs{std::string(tierNames[static_cast<std::size_t>(*number)])};
}

std::optional<Prefs> prefsFromDictionary(const PropertyListDictionary& dictionary) {
    for (const std::string_view key : qualityKeys) {
        const auto entry = dictionary.find(key);
        if (entry == dictionary.end()) continue;
        if (auto prefs = prefsFromValue(entry->second)) return prefs;
    }
    return std::nullopt;
}

struct TierRow {
    std::string_view word;
    enum class Match { contained, whole } match;
    double rate;
    std::uint32_t bitDepth;
    bool lossless;
    bool hiRes;
    std::string_view codec;
};

/// The first row that applies counts. The other words are searched inside longer badge texts; "MAX" is a word
/// that such a text could hold by chance, so it must be the whole tier.
constexpr std::array tierRows = {
    TierRow{"HI-RES", TierRow::Match::contained, 96000, 24, true, true, "FLAC"},
    TierRow{"MAX", TierRow::Match::whole, 96000, 24, true, true, "FLAC"},
    TierRow{"LOSSLESS", TierRow::Match::contained, 44100, 16, true, false, "FLAC"},
    TierRow{"HIGH", TierRow::Match::contained, 44100, 16, false, false, "AAC 320"},
    TierRow{"NORMAL", TierRow::Match::contained, 44100, 16, false, false, "AAC 96"},
};

bool applies(const TierRow& row, std::string_view upperCasedTier) {
    return row.match == TierRow::Match::whole ? upperCasedTier == row.word
                                              : contains(upperCasedTier, row.word);
}

}  // namespace

SourceClaim read(const IntrospectionSeams& seams) {
    const auto configured = readTidalPreferences(seams).value_or(Prefs{}).tier;
    const auto displayed =
        AccessibilityScraper::scrape(seams.accessibility, seams.applications, scrapedBundleID, badgePatterns);
    return makeClaim(SourceApp::tidal, configured, displayed,
                     normaliseTier(decidingTier(configured, displayed)));
}

std::optional<Prefs> readTidalPreferences(const IntrospectionSeams& seams) {
    for (const std::string_view file : preferenceFiles) {
        const std::string path = stringByExpandingTildeInPath(seams.files, file);
        if (!seams.files.fileExistsAtPath(path)) continue;
        const auto dictionary = seams.propertyLists.dictionaryWithContentsOfFile(path);
        if (!dictionary) continue;
        if (auto prefs = prefsFromDictionary(*dictionary)) return prefs;
    }
    return std::nullopt;
}

TierMeaning normaliseTier(std::optional<std::string_view> tier) {
    if (!tier) return {};
    const std::string upper = uppercased(*tier);
    for (const TierRow& row : tierRows) {
        if (applies(row, upper)) {
            return {row.rate, row.bitDepth, row.lossless, row.hiRes, std::string(row.codec)};
        }
    }
    return {};
}

}  // namespace purlock::TidalIntrospector
