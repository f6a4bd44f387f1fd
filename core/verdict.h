#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "core/audio_format.h"
#include "core/device_state.h"

namespace purlock {

/// The overall judgement of the path. Equality compares the case and the formats that it carries.
namespace verdict {

/// The device is not running; `format` is its virtual format.
struct Idle {
    AudioFormat format;
    bool operator==(const Idle&) const = default;
};

/// The device is running and its two formats match in rate and bit depth; `format` is the virtual one.
struct BitPerfect {
    AudioFormat format;
    bool operator==(const BitPerfect&) const = default;
};

/// The device is running and its two formats differ in rate or bit depth.
struct Resampling {
    AudioFormat virtualFormat;
    AudioFormat physicalFormat;
    bool operator==(const Resampling&) const = default;
};

/// There is no device, or one of its formats is not known. `program` has the device and hides what it does to
/// the sound, where the host knows that.
struct Unknown {
    std::optional<std::string> program = {};
    bool operator==(const Unknown&) const = default;
};

/// The device is running and its two formats match, but the mixer is known to change the samples in another
/// way; `format` is the virtual one.
struct Altered {
    AudioFormat format;
    bool operator==(const Altered&) const = default;
};

}  // namespace verdict

using Verdict =
    std::variant<verdict::Idle, verdict::BitPerfect, verdict::Resampling, verdict::Unknown, verdict::Altered>;

/// The judgement of the device alone, whatever plays. Channel count, flags and format identifier do not
/// count. What else the mixer does counts where the host knows it. The status icon, the log and the snapshot
/// show this verdict; the report's follows the same rule.
Verdict deviceVerdict(const std::optional<DeviceState>& state);

/// The words that the user reads: "Idle", "Bit-perfect", "Resampling", "Altered", "No device", and "Not
/// known" where a program hides the answer.
std::string_view verdictHeadline(const Verdict& verdict);

}  // namespace purlock
