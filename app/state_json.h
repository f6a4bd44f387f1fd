#pragma once

#include <optional>
#include <string_view>

#include "base/json.h"
#include "core/verdict.h"

namespace purlock {

// How the log and the snapshot write a device's state. Pure; any thread.

/// "bitsPerChannel", "channels", "label" and "sampleRate" of a format; null when it is absent.
JsonValue formatJson(const std::optional<AudioFormat>& format);

/// The same with "bitsPerSecond".
JsonValue formatJsonWithBitRate(const std::optional<AudioFormat>& format);

/// "idle", "bitPerfect", "resampling", "unknown", "altered".
std::string_view verdictName(const Verdict& verdict);

/// A list of objects, each with the "kind" of an alteration and its details.
JsonValue alterationsJson(const MixerWork& work);

}  // namespace purlock
