#pragma once

#include <optional>
#include <string>
#include <utility>

#include "core/device_state.h"
#include "core/playback.h"
#include "core/source_claim.h"

namespace purlock::test {

/// Interleaved packed PCM, as devices and mixers have it.
inline AudioFormat integerFormat(double rate, std::uint32_t bits, std::uint32_t channels = 2) {
    return {rate, bits, channels, formatFlagIsSignedInteger | formatFlagIsPacked, formatLinearPCM};
}

inline AudioFormat floatFormat(double rate, std::uint32_t bits = 32, std::uint32_t channels = 2) {
    return {rate, bits, channels, formatFlagIsFloat | formatFlagIsPacked, formatLinearPCM};
}

/// A running device named "Desk".
inline DeviceState device(DeviceTransport transport, std::optional<AudioFormat> virtualFormat,
                          std::optional<AudioFormat> physicalFormat) {
    DeviceState state;
    state.deviceID = 42;
    state.name = "Desk";
    state.uid = "desk-1";
    state.virtualFormat = std::move(virtualFormat);
    state.physicalFormat = std::move(physicalFormat);
    state.isRunning = true;
    state.transportType = transport;
    return state;
}

inline SourceClaim claim(SourceApp app, std::optional<double> rate, std::optional<std::uint32_t> bitDepth) {
    SourceClaim result;
    result.app = app;
    result.declaredRate = rate;
    result.declaredBitDepth = bitDepth;
    return result;
}

}  // namespace purlock::test
