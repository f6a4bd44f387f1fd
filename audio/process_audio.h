#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_hardware.h"
#include "base/operating_system.h"
#include "base/running_applications.h"
#include "core/playback.h"

namespace purlock {

/// What the per-process lookups ask.
struct ProcessAudioSeams {
    AudioProperties& hardware;
    RunningApplications& applications;
    OperatingSystem& operatingSystem;
};

/// Which processes produce audio, and on which devices. Stateless; any thread.
namespace ProcessAudio {

/// One process object of the hardware layer, as it was read.
struct RawProcess {
    AudioObjectID objectID = 0;
    std::int32_t pid = 0;  // 0 when it could not be read
    std::optional<std::string> bundleID;
    bool isRunningOutput = false;

    bool operator==(const RawProcess&) const = default;
};

/// Every process object, producing output or not, in the layer's order; empty when they cannot be read.
std::vector<RawProcess> audioProcesses(AudioProperties& hardware);

/// The process that is the source of what `device` plays: the first that produces output on it, else the
/// first that produces output anywhere, for some answer is preferred to none. Absent when none does, and on
/// systems before 14.2, which have no process objects.
std::optional<AudioProcessInfo> currentSourceFor(AudioObjectID device, const ProcessAudioSeams& seams);

/// True if `currentSourceFor` has an answer. Costs less, since it does not ask who that is.
bool hasSource(AudioProperties& hardware, OperatingSystem& operatingSystem);

}  // namespace ProcessAudio

}  // namespace purlock
