#include "audio/process_audio.h"

#include <algorithm>
#include <bit>

#include "audio/property_reader.h"

namespace purlock::ProcessAudio {

namespace {

constexpr OperatingSystemVersion firstWithProcessObjects{14, 2, 0};

std::vector<AudioObjectID> processObjects(AudioProperties& hardware) {
    return readObjects(hardware, kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList,
                       kAudioObjectPropertyScopeGlobal)
        .value_or(std::vector<AudioObjectID>());
}

bool isRunningOutput(AudioProperties& hardware, AudioObjectID process) {
    return readFlag(hardware, process, kAudioProcessPropertyIsRunningOutput);
}

RawProcess readProcess(AudioProperties& hardware, AudioObjectID object) {
    std::uint32_t pid = 0;
    readValue(hardware, object, kAudioProcessPropertyPID, pid);  // a failed read leaves 0
    auto bundleID = readText(hardware, object, kAudioProcessPropertyBundleID);
    if (bundleID && bundleID->empty()) bundleID.reset();
    return {object, std::bit_cast<std::int32_t>(pid), std::move(bundleID), isRunningOutput(hardware, object)};
}

bool outputsTo(AudioProperties& hardware, const RawProcess& process, AudioObjectID device) {
    const auto devices = readObjects(hardware, process.objectID, kAudioProcessPropertyDevices,
                                     kAudioObjectPropertyScopeOutput);
    return devices && std::ranges::find(*devices, device) != devices->end();
}

std::optional<std::string> applicationName(const RawProcess& process, RunningApplications& applications) {
    const auto application = applications.runningApplicationWithProcessIdentifier(process.pid);
    if (!application) return std::nullopt;
    return application->localizedName ? application->localizedName : process.bundleID;
}

}  // namespace

std::vector<RawProcess> audioProcesses(AudioProperties& hardware) {
    std::vector<RawProcess> processes;
    for (const AudioObjectID object : processObjects(hardware)) {
        processes.push_back(readProcess(hardware, object));
    }
    return processes;
}

std::optional<AudioProcessInfo> currentSourceFor(AudioObjectID device, const ProcessAudioSeams& seams) {
    if (seams.operatingSystem.version() < firstWithProcessObjects) return std::nullopt;
    const auto picture = seams.hardware.picture();
    const std::vector<RawProcess> processes = audioProcesses(*picture);
    auto source = std::ranges::find_if(processes, [&](const RawProcess& process) {
        return process.isRunningOutput && outputsTo(*picture, process, device);
    });
    if (source == processes.end()) source = std::ranges::find_if(processes, &RawProcess::isRunningOutput);
    if (source == processes.end()) return std::nullopt;
    return AudioProcessInfo{source->pid, source->bundleID, applicationName(*source, seams.applications),
                            true};
}

bool hasSource(AudioProperties& hardware, OperatingSystem& operatingSystem) {
    if (operatingSystem.version() < firstWithProcessObjects) return false;
    const auto picture = hardware.picture();
    return std::ranges::any_of(processObjects(*picture),
                               [&](AudioObjectID process) { return isRunningOutput(*picture, process); });
}

}  // namespace purlock::ProcessAudio
