// The findings of the cause engine: each names what is wrong, why, and what can be done about it.

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
            return downgraded(joined({"Tidal sent the OS ", formatRate(virtualFormat.sampleRate),
                                      " but its UI claims ", claimedTier(claim),
                                      ". Likely causes: track isn't available in HiRes on Tidal, or your "
                                      "Tidal quality preference is "
                                      "set lower than MAX."}),
                              "Open Tidal → Settings → Streaming → set quality to MAX. If still down, the "
                              "track isn't available in "
                              "HiRes.");
        case SourceApp::appleMusic:
            return downgraded(joined({"Apple Music delivered ", formatRate(virtualFormat.sampleRate),
                                      " — lower than Hi-Res Lossless. Track may not have a Hi-Res master, or "
                                      "Music app is set to "
                                      "standard Lossless."}),
                              "Music → Settings → Playback → Audio Quality → Hi-Res Lossless. Note: not "
                              "every track has a Hi-Res "
                              "master.");
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

Diagnostic bluetoothIsLossy(SourceApp app, const SystemWords& words, const std::optional<MixerWork>& work) {
    const bool isCodecKnown = work && work->linkCodec && !words.bluetoothCodecCause.empty();
    const std::string_view name = app == SourceApp::other ? words.unnamedApp : displayName(app);
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
    if (!claim || !virtualFormat || !claim->declaredRate || !claim->declaredBitDepth) return found;
    if (*claim->declaredRate > virtualFormat->sampleRate)
        found.push_back(rateBelowClaim(*claim, *virtualFormat));
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
    if (transport == DeviceTransport::builtIn && exceedsBuiltIn(declaredRate, physicalFormat, words))
        found.push_back(builtInCap(declaredRate, physicalFormat, words));
    if (transport == DeviceTransport::airplay && declaredRate > airPlayRate)
        found.push_back(airPlayCap(declaredRate, words));
    if (transport == DeviceTransport::bluetooth && source->isLossless.value_or(false)) {
        found.push_back(bluetoothIsLossy(source->app, words, work));
    }
    return found;
}

}  // namespace purlock::CauseEngine
