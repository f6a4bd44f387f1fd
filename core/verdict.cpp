#include "core/verdict.h"

#include "base/overloaded.h"

namespace purlock {

Verdict deviceVerdict(const std::optional<DeviceState>& state) {
    if (!state) return verdict::Unknown{};
    if (!state->virtualFormat || !state->physicalFormat) {
        return verdict::Unknown{state->mixerWork ? state->mixerWork->unseenProgram : std::nullopt};
    }
    const AudioFormat& mixer = *state->virtualFormat;
    const AudioFormat& device = *state->physicalFormat;
    if (!state->isRunning) return verdict::Idle{mixer};
    if (mixer.sampleRate != device.sampleRate || mixer.bitsPerChannel != device.bitsPerChannel) {
        return verdict::Resampling{mixer, device};
    }
    const bool isAltered = state->mixerWork && !state->mixerWork->alterations.empty();
    return isAltered ? Verdict(verdict::Altered{mixer}) : Verdict(verdict::BitPerfect{mixer});
}

std::string_view verdictHeadline(const Verdict& verdict) {
    constexpr Overloaded headline{
        [](const verdict::Idle&) { return "Idle"; },
        [](const verdict::BitPerfect&) { return "Bit-perfect"; },
        [](const verdict::Resampling&) { return "Resampling"; },
        [](const verdict::Unknown& unknown) { return unknown.program ? "Not known" : "No device"; },
        [](const verdict::Altered&) { return "Altered"; },
    };
    return std::visit(headline, verdict);
}

}  // namespace purlock
