#include "platform/linux/pipewire/hardware/answers.h"

#include <algorithm>
#include <array>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr std::uint32_t scopeInput = fourCharCode("inpt");

constexpr std::array systemSelectors = {kAudioHardwarePropertyDevices,
                                        kAudioHardwarePropertyDefaultOutputDevice,
                                        kAudioHardwarePropertyProcessObjectList};
constexpr std::array deviceSelectors = {kAudioObjectPropertyName,
                                        kAudioDevicePropertyDeviceUID,
                                        kAudioDevicePropertyTransportType,
                                        kAudioDevicePropertyDeviceIsRunningSomewhere,
                                        kAudioDevicePropertyNominalSampleRate,
                                        kAudioDevicePropertyStreams};
constexpr std::array streamSelectors = {kAudioStreamPropertyVirtualFormat,
                                        kAudioStreamPropertyPhysicalFormat};
constexpr std::array processSelectors = {kAudioProcessPropertyPID, kAudioProcessPropertyBundleID,
                                         kAudioProcessPropertyIsRunningOutput, kAudioProcessPropertyDevices};

constexpr Answers::Value unknownProperty = {kAudioHardwareUnknownPropertyError, {}};
constexpr Answers::Value badObject = {kAudioHardwareBadObjectError, {}};

template <typename Scalar>
Answers::Value bytesOf(const Scalar& value) {
    return {noErr, std::as_bytes(std::span(&value, 1))};
}

Answers::Value bytesOf(const std::vector<AudioObjectID>& ids) {
    return {noErr, std::as_bytes(std::span(ids))};
}

Answers::Value bytesOf(const std::optional<StreamDescription>& format) {
    return format ? bytesOf(*format) : unknownProperty;
}

bool equal(const Answers::Value& left, const Answers::Value& right) {
    return left.status == right.status && std::ranges::equal(left.bytes, right.bytes);
}

bool equal(const Answers::Text& left, const Answers::Text& right) {
    if (left.status != right.status || (left.text == nullptr) != (right.text == nullptr)) return false;
    return left.text == nullptr || *left.text == *right.text;
}

}  // namespace

Answers::Answers(std::vector<DeviceAnswers> devices, AudioObjectID defaultOutput,
                 std::vector<ProcessAnswers> processes)
    : devices_(std::move(devices)), defaultOutput_(defaultOutput), processes_(std::move(processes)) {
    for (std::size_t i = 0; i < devices_.size(); ++i) {
        deviceIDs_.push_back(devices_[i].id);
        places_[devices_[i].id] = {Kind::device, i};
        for (const AudioObjectID stream : devices_[i].streams) places_[stream] = {Kind::stream, i};
    }
    for (std::size_t i = 0; i < processes_.size(); ++i) {
        processIDs_.push_back(processes_[i].id);
        places_[processes_[i].id] = {Kind::process, i};
    }
}

Answers::Place Answers::find(AudioObjectID object) const {
    if (object == kAudioObjectSystemObject) return {Kind::system, 0};
    const auto place = places_.find(object);
    return place == places_.end() ? Place{} : place->second;
}

Answers::Value Answers::value(AudioObjectID object, const PropertyAddress& address) const {
    const Place place = find(object);
    switch (place.kind) {
        case Kind::none:
            return badObject;
        case Kind::system:
            return systemValue(address.selector);
        case Kind::device:
            return deviceValue(devices_[place.index], address);
        case Kind::stream:
            return streamValue(devices_[place.index], address.selector);
        case Kind::process:
            return processValue(processes_[place.index], address.selector);
    }
    return badObject;
}

Answers::Value Answers::systemValue(std::uint32_t selector) const {
    switch (selector) {
        case kAudioHardwarePropertyDevices:
            return bytesOf(deviceIDs_);
        case kAudioHardwarePropertyDefaultOutputDevice:
            return bytesOf(defaultOutput_);
        case kAudioHardwarePropertyProcessObjectList:
            return bytesOf(processIDs_);
        default:
            return unknownProperty;
    }
}

Answers::Value Answers::deviceValue(const DeviceAnswers& device, const PropertyAddress& address) {
    switch (address.selector) {
        case kAudioDevicePropertyTransportType:
            return bytesOf(device.transport);
        case kAudioDevicePropertyDeviceIsRunningSomewhere:
            return bytesOf(device.isRunning);
        case kAudioDevicePropertyStreams:
            return address.scope == scopeInput ? Value{} : bytesOf(device.streams);
        case kAudioDevicePropertyNominalSampleRate:
            return device.physicalFormat ? bytesOf(device.physicalFormat->sampleRate) : unknownProperty;
        default:
            return unknownProperty;
    }
}

Answers::Value Answers::streamValue(const DeviceAnswers& device, std::uint32_t selector) {
    switch (selector) {
        case kAudioStreamPropertyVirtualFormat:
            return bytesOf(device.virtualFormat);
        case kAudioStreamPropertyPhysicalFormat:
            return bytesOf(device.physicalFormat);
        default:
            return unknownProperty;
    }
}

Answers::Value Answers::processValue(const ProcessAnswers& process, std::uint32_t selector) {
    switch (selector) {
        case kAudioProcessPropertyPID:
            return bytesOf(process.processIdentifier);
        case kAudioProcessPropertyIsRunningOutput:
            return bytesOf(process.isRunningOutput);
        case kAudioProcessPropertyDevices:
            return bytesOf(process.devices);
        default:
            return unknownProperty;
    }
}

Answers::Text Answers::text(AudioObjectID object, const PropertyAddress& address) const {
    const Place place = find(object);
    if (place.kind == Kind::none) return {kAudioHardwareBadObjectError, nullptr};
    if (place.kind == Kind::device) {
        const DeviceAnswers& device = devices_[place.index];
        if (address.selector == kAudioObjectPropertyName) return {noErr, &device.name};
        if (address.selector == kAudioDevicePropertyDeviceUID) return {noErr, &device.uid};
    }
    if (place.kind == Kind::process && address.selector == kAudioProcessPropertyBundleID) {
        const auto& bundleID = processes_[place.index].bundleID;
        return {noErr, bundleID ? &*bundleID : nullptr};
    }
    return {kAudioHardwareUnknownPropertyError, nullptr};
}

std::optional<MixerWork> Answers::mixerWork(AudioObjectID device) const {
    const Place place = find(device);
    if (place.kind != Kind::device) return std::nullopt;
    return devices_[place.index].mixerWork;
}

void Answers::addChanges(std::vector<Change>& changes, const Answers& before, AudioObjectID object,
                         std::span<const std::uint32_t> selectors) const {
    if (!before.holds(object)) return;
    for (const std::uint32_t selector : selectors) {
        const PropertyAddress address{selector, kAudioObjectPropertyScopeOutput,
                                      kAudioObjectPropertyElementMain};
        if (equal(value(object, address), before.value(object, address)) &&
            equal(text(object, address), before.text(object, address))) {
            continue;
        }
        changes.push_back({object, selector});
    }
}

std::vector<Answers::Change> Answers::changesSince(const Answers& before) const {
    std::vector<Change> changes;
    addChanges(changes, before, kAudioObjectSystemObject, systemSelectors);
    for (const DeviceAnswers& device : devices_) {
        addChanges(changes, before, device.id, deviceSelectors);
        for (const AudioObjectID stream : device.streams) {
            const Change virtualFormat{stream, kAudioStreamPropertyVirtualFormat};
            addChanges(changes, before, stream, streamSelectors);
            // The mixer's work has no property of its own: it tells how the virtual format is treated.
            if (before.holds(stream) && mixerWork(device.id) != before.mixerWork(device.id) &&
                std::find(changes.begin(), changes.end(), virtualFormat) == changes.end()) {
                changes.push_back(virtualFormat);
            }
        }
    }
    for (const ProcessAnswers& process : processes_) {
        addChanges(changes, before, process.id, processSelectors);
    }
    return changes;
}

}  // namespace purlock::host_linux
