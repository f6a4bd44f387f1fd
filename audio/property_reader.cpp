#include "audio/property_reader.h"

#include <algorithm>

namespace purlock {

namespace {

constexpr PropertyAddress mainAddress(std::uint32_t selector, std::uint32_t scope) {
    return {selector, scope, kAudioObjectPropertyElementMain};
}

constexpr PropertyAddress globalAddress(std::uint32_t selector) {
    return mainAddress(selector, kAudioObjectPropertyScopeGlobal);
}

// No machine has as many devices, streams or processes; a larger list is a broken answer.
constexpr std::size_t mostObjects = 65536;

}  // namespace

std::optional<std::uint32_t> readSize(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector,
                                      std::uint32_t scope) {
    std::uint32_t size = 0;
    if (hardware.getPropertyDataSize(object, mainAddress(selector, scope), size) != noErr) {
        return std::nullopt;
    }
    return size;
}

std::optional<std::vector<AudioObjectID>> readObjects(AudioProperties& hardware, AudioObjectID object,
                                                      std::uint32_t selector, std::uint32_t scope) {
    const auto announced = readSize(hardware, object, selector, scope);
    if (!announced) return std::nullopt;
    const std::size_t count = *announced / sizeof(AudioObjectID);
    if (count > mostObjects) return std::nullopt;
    std::vector<AudioObjectID> objects(count);
    if (count == 0) return objects;
    auto size = static_cast<std::uint32_t>(count * sizeof(AudioObjectID));
    const auto status = hardware.getPropertyData(object, mainAddress(selector, scope), size, objects.data());
    if (status != noErr) return std::nullopt;
    objects.resize(std::min(count, size / sizeof(AudioObjectID)));
    return objects;
}

std::optional<std::string> readText(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector) {
    std::optional<std::string> text;
    if (hardware.getPropertyText(object, globalAddress(selector), text) != noErr) return std::nullopt;
    return text;
}

HardwareStatus readValue(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector,
                         std::uint32_t& value) {
    std::uint32_t size = sizeof value;
    return hardware.getPropertyData(object, globalAddress(selector), size, &value);
}

bool readFlag(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector) {
    std::uint32_t value = 0;
    return readValue(hardware, object, selector, value) == noErr && value != 0;
}

std::vector<AudioObjectID> outputStreams(AudioProperties& hardware, AudioObjectID device) {
    return readObjects(hardware, device, kAudioDevicePropertyStreams, kAudioObjectPropertyScopeOutput)
        .value_or(std::vector<AudioObjectID>{});
}

std::optional<AudioFormat> streamFormat(AudioProperties& hardware, AudioObjectID stream,
                                        std::uint32_t selector) {
    StreamDescription description;
    std::uint32_t size = sizeof description;
    if (hardware.getPropertyData(stream, globalAddress(selector), size, &description) != noErr) {
        return std::nullopt;
    }
    return AudioFormat{description.sampleRate, description.bitsPerChannel, description.channelsPerFrame,
                       description.formatFlags, description.formatID};
}

}  // namespace purlock
