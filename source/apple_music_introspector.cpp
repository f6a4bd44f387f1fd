#include "source/apple_music_introspector.h"

#include <array>
#include <string>
#include <variant>

#include "base/text.h"
#include "source/accessibility_scraper.h"

namespace purlock::AppleMusicIntrospector {

namespace {

constexpr std::string_view scrapedBundleID = "com.apple.Music";
constexpr std::array<std::string_view, 4> badgePatterns = {"Hi-Res Lossless", "Lossless", "High Quality",
                                                           "Dolby Atmos"};

constexpr std::string_view preferenceFile = "~/Library/Preferences/com.apple.Music.plist";

/// The spellings of a switch, in the order in which they are asked.
using SwitchKeys = std::array<std::string_view, 2>;
constexpr SwitchKeys losslessKeys = {"lossless-enabled", "losslessEnabled"};
constexpr SwitchKeys hiResKeys = {"hi-res-lossless-enabled", "hiResLosslessEnabled"};

/// The first key that holds a Boolean decides, also when it says no.
bool isSwitchedOn(const PropertyListDictionary& dictionary, const SwitchKeys& keys) {
    for (const std::string_view key : keys) {
        const auto entry = dictionary.find(key);
        if (entry == dictionary.end()) continue;
        if (const auto* value = std::get_if<bool>(&entry->second)) return *value;
    }
    return false;
}

struct TierRow {
    std::string_view word;
    double rate;
    std::uint32_t bitDepth;
    bool lossless;
    bool hiRes;
    std::string_view codec;
};

/// The first row whose word the tier contains counts. The figures are what the cause engine compares with the
/// device, chosen for that: plain lossless goes up to 48 kHz, and Dolby Atmos counts as lossless.
constexpr std::array tierRows = {
    TierRow{"hi-res", 96000, 24, true, true, "ALAC"},
    TierRow{"lossless", 48000, 24, true, false, "ALAC"},
    TierRow{"high", 44100, 16, false, false, "AAC 256"},
    TierRow{"dolby", 48000, 24, true, false, "Dolby Atmos"},
};

}  // namespace

SourceClaim read(const IntrospectionSeams& seams) {
    const auto configured = readPreferences(seams).value_or(Prefs{}).tier;
    const auto displayed =
        AccessibilityScraper::scrape(seams.accessibility, seams.applications, scrapedBundleID, badgePatterns);
    return makeClaim(SourceApp::appleMusic, configured, displayed,
                     normaliseTier(decidingTier(configured, displayed)));
}

std::optional<Prefs> readPreferences(const IntrospectionSeams& seams) {
    const std::string path = stringByExpandingTildeInPath(seams.files, preferenceFile);
    if (!seams.files.fileExistsAtPath(path)) return std::nullopt;
    const auto dictionary = seams.propertyLists.dictionaryWithContentsOfFile(path);
    if (!dictionary) return std::nullopt;
    if (isSwitchedOn(*dictionary, hiResKeys)) return Prefs{"Hi-Res Lossless"};
    if (isSwitchedOn(*dictionary, losslessKeys)) return Prefs{"Lossless"};
    return Prefs{"High Quality"};
}

TierMeaning normaliseTier(std::optional<std::string_view> tier) {
    if (!tier) return {};
    const std::string lower = lowercased(*tier);
    for (const TierRow& row : tierRows) {
        if (contains(lower, row.word)) {
            return {row.rate, row.bitDepth, row.lossless, row.hiRes, std::string(row.codec)};
        }
    }
    return {};
}

}  // namespace purlock::AppleMusicIntrospector
