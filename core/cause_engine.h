#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/device_state.h"
#include "core/playback.h"
#include "core/report.h"
#include "core/source_claim.h"
#include "core/system_words.h"

namespace purlock {

/// The rules that turn one observation of the output path into a report. Pure functions: no clock, no input
/// or output, nothing kept; any thread. No input makes them fail: what is absent gives fallback texts and
/// fewer findings.
namespace CauseEngine {

/// Five stages from the source to the device, the findings of the four functions below in their order, the
/// verdict. `words` speak of the system.
SignalPathReport evaluate(const std::optional<DeviceState>& deviceState,
                          const std::optional<NowPlayingInfo>& nowPlaying,
                          const std::optional<AudioProcessInfo>& process,
                          const std::optional<SourceClaim>& sourceClaim, const SystemWords& words = {});

/// "44.1 kHz", and "999 Hz" below 1000.
std::string formatRate(double rate);

/// The bit rate of raw PCM: "4.61 Mbps", and "128 kbps" below a million.
std::string bitrateLabel(double rate, std::uint32_t bits, int channels);

/// What the application claims against what reaches the system's mixer: at most two findings, the rate first.
/// Nothing is said unless the claim names both a rate and a bit depth. Of a played file either is enough, a
/// higher rate than the file's is a finding too, and nothing is said unless its player is heard alone.
std::vector<Diagnostic> sourceVsHALDiagnostics(const std::optional<SourceClaim>& claim,
                                               const std::optional<AudioFormat>& virtualFormat);

/// The mixer's format against the device's: at most two findings, the rate first. `source` is not consulted.
/// `work` may know why a rate is converted.
std::vector<Diagnostic> halResamplingDiagnostics(const std::optional<AudioFormat>& virtualFormat,
                                                 const std::optional<AudioFormat>& physicalFormat,
                                                 const std::optional<SourceClaim>& source,
                                                 const SystemWords& words = {},
                                                 const std::optional<MixerWork>& work = {});

/// What the link itself cannot carry of what the source claims: at most one finding. `physicalFormat` is not
/// consulted unless `words` say that a built-in output's own rate counts. `work` may know the link's codec.
std::vector<Diagnostic> transportCapDiagnostics(DeviceTransport transport,
                                                const std::optional<AudioFormat>& physicalFormat,
                                                const std::optional<SourceClaim>& source,
                                                const SystemWords& words = {},
                                                const std::optional<MixerWork>& work = {});

/// Makes one finding for each alteration, in their order. There is none where the host cannot know.
std::vector<Diagnostic> alterationDiagnostics(const std::optional<MixerWork>& work,
                                              const SystemWords& words = {});

}  // namespace CauseEngine

}  // namespace purlock
