#include "core/cause_engine.h"

#include <iterator>
#include <string_view>
#include <utility>

#include "core/rate_text.h"

namespace purlock::CauseEngine {

namespace {

using Kind = SignalStage::Kind;
using Quality = SignalStage::Quality;

SignalStage makeStage(Kind kind, std::string_view title, std::string primary,
                      std::optional<std::string> secondary = {}, std::optional<std::string> bitrate = {},
                      Quality quality = Quality::unknown) {
    return {Uuid::random(),     kind,   std::string(title), std::move(primary), std::move(secondary),
            std::move(bitrate), quality};
}

std::optional<std::string> shownTier(const SourceClaim& claim) {
    if (claim.displayedTier && !claim.displayedTier->empty()) return claim.displayedTier;
    if (claim.configuredTier && !claim.configuredTier->empty()) return claim.configuredTier;
    return std::nullopt;
}

std::optional<std::string> claimedBitrate(const SourceClaim& claim) {
    constexpr int assumedChannels = 2;  // no claim names a channel count
    if (!claim.declaredRate || !claim.declaredBitDepth) return std::nullopt;
    return bitrateLabel(*claim.declaredRate, *claim.declaredBitDepth, assumedChannels);
}

/// "FLAC · 24-bit · 96.0 kHz", as far as it is known.
std::string fileSummary(const SourceClaim& claim) {
    std::string text = claim.codec.value_or("");
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : " · ") + part; };
    if (claim.declaredBitDepth) add(std::to_string(*claim.declaredBitDepth) + "-bit");
    if (claim.declaredRate) add(formatRate(*claim.declaredRate));
    return text;
}

/// A lossless file shows the bit rate of the sound in it. A lossy file shows its own.
std::optional<std::string> fileBitrate(const SourceClaim& claim) {
    const bool isLossless = claim.isLossless.value_or(false);
    if (isLossless && claim.declaredRate && claim.declaredBitDepth && claim.file->channelCount) {
        return bitrateLabel(*claim.declaredRate, *claim.declaredBitDepth,
                            static_cast<int>(*claim.file->channelCount));
    }
    if (!claim.file->bitsPerSecond) return std::nullopt;
    return bitRateText(*claim.file->bitsPerSecond);
}

SignalStage fileStage(const SourceClaim& claim) {
    const Quality quality = claim.isLossless.value_or(false) ? Quality::lossless : Quality::lossy;
    return makeStage(Kind::source, "Source", claim.file->playerName.value_or("—"), fileSummary(claim),
                     fileBitrate(claim), quality);
}

SignalStage sourceStage(const std::optional<SourceClaim>& claim,
                        const std::optional<NowPlayingInfo>& nowPlaying) {
    constexpr std::string_view title = "Source";
    if (claim && claim->file) return fileStage(*claim);
    if (claim) {
        // A claim that does not say that it is lossless counts as lossy.
        const Quality quality = claim->isLossless.value_or(false) ? Quality::lossless : Quality::lossy;
        return makeStage(Kind::source, title, std::string(displayName(claim->app)), shownTier(*claim),
                         claimedBitrate(*claim), quality);
    }
    if (nowPlaying && nowPlaying->appName) {
        return makeStage(Kind::source, title, *nowPlaying->appName, "(source quality not detected)");
    }
    return makeStage(Kind::source, title, "(no source identified)");
}

std::string processName(const AudioProcessInfo& process) {
    if (process.appName) return *process.appName;
    if (process.bundleID) return *process.bundleID;
    return "PID " + std::to_string(process.pid);
}

SignalStage appStage(const std::optional<AudioProcessInfo>& process,
                     const std::optional<NowPlayingInfo>& nowPlaying) {
    constexpr std::string_view title = "App";
    if (process) return makeStage(Kind::app, title, processName(*process), process->bundleID);
    if (nowPlaying && nowPlaying->appName) {
        return makeStage(Kind::app, title, *nowPlaying->appName, nowPlaying->appBundleID);
    }
    return makeStage(Kind::app, title, "—");
}

/// The mixer's and the device's own format are facts, not judgements: they are never graded.
SignalStage formatStage(Kind kind, std::string_view title, const std::optional<AudioFormat>& format) {
    if (!format) return makeStage(kind, title, "—");
    return makeStage(kind, title, format->summary(), format->formatLabel(), format->bitrateLabel());
}

/// What the last stage shows for each transport. `fallbackName` stands where there is no device; `bitrate` is
/// the link's ceiling where it has one, and the device's own bit rate otherwise.
struct LinkTexts {
    std::string_view title;
    std::string_view fallbackName;
    std::string_view secondary;
    std::string_view bitrate;
    Quality quality;
};

LinkTexts linkTexts(DeviceTransport transport, const SystemWords& words) {
    // clang-format off
    switch (transport) {
        case DeviceTransport::usb:           return {"USB device",     "USB Audio",      "USB Audio",                   "",           Quality::lossless};
        case DeviceTransport::bluetooth:     return {"Bluetooth wire", "Bluetooth",      words.bluetoothLink,           words.bluetoothBitrate, Quality::lossy};
        case DeviceTransport::airplay:       return {"AirPlay wire",   "AirPlay",        "ALAC 16/44.1 cap",            "1.41 Mbps",  Quality::formatOnly};
        case DeviceTransport::hdmi:          return {"HDMI wire",      "HDMI",           "EDID-advertised format",      "",           Quality::lossless};
        case DeviceTransport::builtIn:       return {"Built-in",       "Built-in",       words.builtInLink,             "",           Quality::formatOnly};
        case DeviceTransport::aggregate:     return {"Aggregate",      "Aggregate",      "Aggregate",                   "",           Quality::unknown};
        case DeviceTransport::virtualDevice: return {"Virtual device", "Virtual device", "Virtual device",              "",           Quality::unknown};
        case DeviceTransport::displayPort:   return {"DisplayPort",    "DisplayPort",    "",                            "",           Quality::lossless};
        case DeviceTransport::unknown:       break;
    }
    // clang-format on
    return {"Output", "—", "", "", Quality::unknown};
}

/// The name by which the device knows itself, where its link tells one; else the system's name for it.
std::string deviceName(const DeviceState& state) {
    if (state.transportType == DeviceTransport::usb && state.usbInfo && state.usbInfo->productName) {
        return *state.usbInfo->productName;
    }
    if (state.transportType == DeviceTransport::bluetooth && state.bluetoothInfo) {
        return state.bluetoothInfo->name;
    }
    return state.name;
}

std::optional<std::string> textOrAbsent(std::string_view text) {
    if (text.empty()) return std::nullopt;
    return std::string(text);
}

/// The text for a Bluetooth link; absent when its codec is not known.
std::optional<std::string> codecLink(const std::optional<DeviceState>& state, const SystemWords& words) {
    if (!state || state->transportType != DeviceTransport::bluetooth) return std::nullopt;
    if (!state->mixerWork || !state->mixerWork->linkCodec || words.bluetoothCodecLink.empty()) {
        return std::nullopt;
    }
    return fill(words.bluetoothCodecLink, {{"codec", *state->mixerWork->linkCodec}});
}

SignalStage deviceStage(const std::optional<DeviceState>& state, const SystemWords& words) {
    const LinkTexts texts = linkTexts(state ? state->transportType : DeviceTransport::unknown, words);
    if (auto link = codecLink(state, words)) {
        return makeStage(Kind::device, texts.title, deviceName(*state), std::move(link), {}, texts.quality);
    }
    auto bitrate = textOrAbsent(texts.bitrate);
    const bool isCompressed = state && state->transportType == DeviceTransport::bluetooth;
    if (!bitrate && state && state->physicalFormat && !isCompressed) {
        bitrate = state->physicalFormat->bitrateLabel();
    }
    return makeStage(Kind::device, texts.title, state ? deviceName(*state) : std::string(texts.fallbackName),
                     textOrAbsent(texts.secondary), std::move(bitrate), texts.quality);
}

void append(std::vector<Diagnostic>& list, std::vector<Diagnostic> more) {
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

/// The format that a claim is compared with: the mixer's. A player of files is compared with its own stream,
/// for the mixer's format may be that of another program or of a conversion further on.
std::optional<AudioFormat> handedOver(const std::optional<SourceClaim>& claim,
                                      const std::optional<DeviceState>& state) {
    if (!state) return std::nullopt;
    if (!claim || !claim->file) return state->virtualFormat;
    const auto& work = state->mixerWork;
    const auto& player = claim->file->playerProcess;
    return work && player && work->streamProcess == player ? work->streamFormat : std::nullopt;
}

}  // namespace

SignalPathReport evaluate(const std::optional<DeviceState>& deviceState,
                          const std::optional<NowPlayingInfo>& nowPlaying,
                          const std::optional<AudioProcessInfo>& process,
                          const std::optional<SourceClaim>& sourceClaim, const SystemWords& words) {
    const std::optional<AudioFormat> none;
    const auto& virtualFormat = deviceState ? deviceState->virtualFormat : none;
    const auto& physicalFormat = deviceState ? deviceState->physicalFormat : none;
    const auto transport = deviceState ? deviceState->transportType : DeviceTransport::unknown;
    const std::optional<MixerWork> nothingKnown;
    const auto& work = deviceState ? deviceState->mixerWork : nothingKnown;

    SignalPathReport report;
    report.stages.reserve(5);
    report.stages.push_back(sourceStage(sourceClaim, nowPlaying));
    report.stages.push_back(appStage(process, nowPlaying));
    report.stages.push_back(formatStage(Kind::halVirtual, "HAL virtual", virtualFormat));
    report.stages.push_back(formatStage(Kind::halPhysical, "HAL physical", physicalFormat));
    report.stages.push_back(deviceStage(deviceState, words));

    append(report.diagnostics, sourceVsHALDiagnostics(sourceClaim, handedOver(sourceClaim, deviceState)));
    append(report.diagnostics,
           halResamplingDiagnostics(virtualFormat, physicalFormat, sourceClaim, words, work));
    append(report.diagnostics, transportCapDiagnostics(transport, physicalFormat, sourceClaim, words, work));
    append(report.diagnostics, alterationDiagnostics(work, words));

    report.verdict = deviceVerdict(deviceState);
    return report;
}

std::string formatRate(double rate) {
    return rateText(rate);
}

std::string bitrateLabel(double rate, std::uint32_t bits, int channels) {
    return bitRateText(static_cast<double>(bits) * rate * static_cast<double>(channels));
}

}  // namespace purlock::CauseEngine
