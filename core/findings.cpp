// The findings of the cause engine: each names what is wrong, why, and what can be done about it.

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "base/text.h"
#include "core/cause_engine.h"
#include "core/rate_finding.h"

namespace purlock::CauseEngine {

namespace {

using Severity = Diagnostic::Severity;

Diagnostic makeFinding(Severity severity, std::string_view title, std::string cause, std::string fix) {
    return {Uuid::random(), severity, std::string(title), std::move(cause), std::move(fix)};
}

Diagnostic downgraded(std::string cause, std::string fix) {
    return makeFinding(Severity::high, "Source app downgraded", std::move(cause), std::move(fix));
}

std::string_view claimedTier(const SourceClaim& claim) {
    if (claim.displayedTier) return *claim.displayedTier;
    if (claim.configuredTier) return *claim.configuredTier;
    return "MAX";
}

Diagnostic rateBelowClaim(const SourceClaim& claim, const AudioFormat& virtualFormat) {
    switch (claim.app) {
        case SourceApp::tidal:
            return downgraded(
                joined(
                    {"Tidal sent the OS ", formatRate(virtualFormat.sampleRate), " but its UI claims ",
                     claimedTier(claim),
                     ". "
                     "Likely causes: track isn't available in HiRes on Tidal, or your Tidal quality preference is set lower than MAX."}),
                "Open Tidal → Settings → Streaming → set quality to MAX. "
                "If still down, the track isn't available in HiRes.");
        case SourceApp::appleMusic:
            return downgraded(
                joined({"Apple Music delivered ", formatRate(virtualFormat.sampleRate),
                        " — lower than Hi-Res Lossless. "
                        "Track may not have a Hi-Res master, or Music app is set to standard Lossless."}),
                "Music → Settings → Playback → Audio Quality → Hi-Res Lossless. "
                "Note: not every track has a Hi-Res master.");
        case SourceApp::spotify:
            return downgraded("Spotify is lossy by design; max is 320 kbps Ogg Vorbis.",
                              "(no fix — Spotify doesn't offer lossless)");
        case SourceApp::qobuz:
        case SourceApp::other:
            break;
    }
    return downgraded(
        "Source app sent a lower rate than its claimed tier.",
        "Check the app's quality preference; the track may not be available at the higher tier.");
}

Diagnostic bitDepthBelowClaim(SourceApp app, std::uint32_t declared, std::uint32_t seen) {
    return makeFinding(Severity::medium, "Source app delivered lower bit depth",
                       joined({displayName(app), " advertised ", std::to_string(declared),
                               "-bit but the OS sees ", std::to_string(seen), "-bit."}),
                       "Confirm the track has a higher-bit master available in this service.");
}

// A player of files: what is in the file against what the player hands to the system.

/// How a sentence calls the player, at its start and within it.
struct PlayerWords {
    std::string subject;
    std::string possessive;
};

PlayerWords playerWords(const FileClaim& file) {
    if (!file.playerName) return {"The player", "the player's"};
    return {*file.playerName, joined({*file.playerName, "'s"})};
}

Diagnostic fileConverted(Severity severity, std::string_view title, const PlayerWords& player,
                         std::string_view inFile, std::string_view handedOver, std::string_view fix) {
    return makeFinding(
        severity, title,
        joined({player.subject, " is playing a ", inFile, " file but hands the system ", handedOver, "."}),
        joined({"Look in ", player.possessive, " audio settings for ", fix}));
}

constexpr std::string_view rateFix =
    "a fixed output sample rate, a resampler or an effect, and switch it off, so that the file's own rate is handed over.";

std::vector<Diagnostic> fileDiagnostics(const SourceClaim& claim, const AudioFormat& virtualFormat) {
    // The mixer computes in floats that hold no more than this, so more in the file is lost in no player.
    constexpr std::uint32_t mostUsefulBits = 24;
    std::vector<Diagnostic> found;
    const PlayerWords player = playerWords(*claim.file);
    const bool isLossless = claim.isLossless.value_or(false);
    if (claim.declaredRate && *claim.declaredRate != virtualFormat.sampleRate) {
        const std::string inFile = formatRate(*claim.declaredRate);
        const std::string handedOver = formatRate(virtualFormat.sampleRate);
        if (*claim.declaredRate > virtualFormat.sampleRate) {
            found.push_back(
                fileConverted(Severity::high, "Source app downgraded", player, inFile, handedOver, rateFix));
        } else if (isLossless) {
            // A lossy codec may well be decoded to more than the rate that its file names.
            found.push_back(fileConverted(Severity::medium, "Source app is resampling", player, inFile,
                                          handedOver, rateFix));
        }
    }
    if (isLossless &&
        std::min(claim.declaredBitDepth.value_or(0), mostUsefulBits) > virtualFormat.bitsPerChannel) {
        found.push_back(
            fileConverted(Severity::medium, "Source app delivered lower bit depth", player,
                          joined({std::to_string(*claim.declaredBitDepth), "-bit"}),
                          joined({std::to_string(virtualFormat.bitsPerChannel), "-bit"}),
                          "the bit depth of its output, and choose one that is not below the file's."));
    }
    return found;
}

/// The label ends in the bit count, so the sentence names it twice, on purpose: "32-bit Float32".
Diagnostic bitDepthConverted(const AudioFormat& virtualFormat, const AudioFormat& physicalFormat,
                             const SystemWords& words) {
    const auto depth = [](const AudioFormat& format) {
        return joined({std::to_string(format.bitsPerChannel), "-bit ", format.formatLabel()});
    };
    return makeFinding(
        Severity::medium, "Bit depth changed",
        fill(words.depthCause, {{"from", depth(virtualFormat)}, {"to", depth(physicalFormat)}}),
        words.depthFix);
}

/// Where a built-in output's rate is fixed, everything above `builtInRate` is too much for it; elsewhere its
/// own rate counts.
bool exceedsBuiltIn(double declaredRate, const std::optional<AudioFormat>& physicalFormat,
                    const SystemWords& words) {
    constexpr double builtInRate = 48000.0;
    if (declaredRate <= builtInRate) return false;
    return words.isBuiltInFixed || (physicalFormat && declaredRate > physicalFormat->sampleRate);
}

Diagnostic builtInCap(double declaredRate, const std::optional<AudioFormat>& physicalFormat,
                      const SystemWords& words) {
    const std::string claimed = formatRate(declaredRate);
    const std::string device = physicalFormat ? formatRate(physicalFormat->sampleRate) : std::string();
    const std::vector<Filling> rates = {{"claimed", claimed}, {"device", device}};
    return makeFinding(Severity::low, words.builtInTitle, fill(words.builtInCause, rates),
                       fill(words.builtInFix, rates));
}

Diagnostic airPlayCap(double declaredRate, const SystemWords& words) {
    return makeFinding(Severity::medium, "AirPlay caps at 16/44.1",
                       fill(words.airPlayCause, {{"claimed", formatRate(declaredRate)}}),
                       "Use a wired/USB DAC for HiRes. AirPlay tops out at CD quality.");
}

/// Who sends: the player of a file by its name, else the service.
std::string_view senderName(const SourceClaim& claim, const SystemWords& words) {
    if (claim.file && claim.file->playerName) return *claim.file->playerName;
    return claim.app == SourceApp::other ? std::string_view(words.unnamedApp) : displayName(claim.app);
}

Diagnostic bluetoothIsLossy(const SourceClaim& claim, const SystemWords& words,
                            const std::optional<MixerWork>& work) {
    const bool isCodecKnown = work && work->linkCodec && !words.bluetoothCodecCause.empty();
    const std::string_view name = senderName(claim, words);
    const std::string_view codec = isCodecKnown ? std::string_view(*work->linkCodec) : std::string_view();
    return makeFinding(Severity::high, "Bluetooth can't carry lossless",
                       fill(isCodecKnown ? words.bluetoothCodecCause : words.bluetoothCause,
                            {{"app", name}, {"codec", codec}}),
                       words.bluetoothFix);
}

}  // namespace

std::vector<Diagnostic> sourceVsHALDiagnostics(const std::optional<SourceClaim>& claim,
                                               const std::optional<AudioFormat>& virtualFormat) {
    std::vector<Diagnostic> found;
    if (claim && claim->file) {
        return virtualFormat ? fileDiagnostics(*claim, *virtualFormat) : std::vector<Diagnostic>();
    }
    if (!claim || !virtualFormat || !claim->declaredRate || !claim->declaredBitDepth) return found;
    if (*claim->declaredRate > virtualFormat->sampleRate) {
        found.push_back(rateBelowClaim(*claim, *virtualFormat));
    }
    if (*claim->declaredBitDepth > virtualFormat->bitsPerChannel) {
        found.push_back(
            bitDepthBelowClaim(claim->app, *claim->declaredBitDepth, virtualFormat->bitsPerChannel));
    }
    return found;
}

std::vector<Diagnostic> halResamplingDiagnostics(const std::optional<AudioFormat>& virtualFormat,
                                                 const std::optional<AudioFormat>& physicalFormat,
                                                 const std::optional<SourceClaim>& /*source*/,
                                                 const SystemWords& words,
                                                 const std::optional<MixerWork>& work) {
    std::vector<Diagnostic> found;
    if (!virtualFormat || !physicalFormat) return found;
    if (virtualFormat->sampleRate != physicalFormat->sampleRate) {
        const auto conversion = work ? work->rateConversion : std::nullopt;
        found.push_back(
            rateFinding(virtualFormat->sampleRate, physicalFormat->sampleRate, conversion, words));
    }
    if (virtualFormat->bitsPerChannel != physicalFormat->bitsPerChannel) {
        found.push_back(bitDepthConverted(*virtualFormat, *physicalFormat, words));
    }
    return found;
}

std::vector<Diagnostic> transportCapDiagnostics(DeviceTransport transport,
                                                const std::optional<AudioFormat>& physicalFormat,
                                                const std::optional<SourceClaim>& source,
                                                const SystemWords& words,
                                                const std::optional<MixerWork>& work) {
    constexpr double airPlayRate = 44100.0;
    std::vector<Diagnostic> found;
    if (!source || !source->declaredRate) return found;
    const double declaredRate = *source->declaredRate;
    // Only three links cap what they carry; a transport that is new to the enumeration caps nothing.
    if (transport == DeviceTransport::builtIn && exceedsBuiltIn(declaredRate, physicalFormat, words)) {
        found.push_back(builtInCap(declaredRate, physicalFormat, words));
    }
    if (transport == DeviceTransport::airplay && declaredRate > airPlayRate) {
        found.push_back(airPlayCap(declaredRate, words));
    }
    if (transport == DeviceTransport::bluetooth && source->isLossless.value_or(false)) {
        found.push_back(bluetoothIsLossy(*source, words, work));
    }
    return found;
}

}  // namespace purlock::CauseEngine
