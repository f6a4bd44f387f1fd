#include "core/verdict.h"

namespace purlock {

Verdict deviceVerdict(const std::optional<DeviceState>& state) {
    if (!state || !state->virtualFormat || !state->physicalFormat) return verdict::Unknown{};
    const AudioFormat& mixer = *state->virtualFormat;
    const AudioFormat& device = *state->physicalFormat;
    if (!state->isRunning) return verdict::Idle{mixer};
    if (mixer.sampleRate != device.sampleRate || mixer.bitsPerChannel != device.bitsPerChannel) {
        return verdict::Resampling{mixer, device};
    }
    const bool isAltered = state->mixerWork && !state->mixerWork->alterations.empty();
    return isAltered ? Verdict(verdict::Altered{mixer}) : Verdict(verdict::BitPerfect{mixer});
}

}  // namespace purlock
