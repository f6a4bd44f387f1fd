#include "tests/host-linux/pipewire/hardware/audio_observer.h"

#include <array>
#include <cstring>

#include "core/audio_format.h"

namespace purlock::test {

namespace {

PropertyAddress global(std::uint32_t selector) {
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

PropertyAddress output(std::uint32_t selector) {
    return {selector, kAudioObjectPropertyScopeOutput, kAudioObjectPropertyElementMain};
}

/// The formats that the tests use, by the name that pw-dump prints.
struct DumpedFormat {
    const char* name;
    std::uint32_t bits;
    std::uint32_t flags;
    std::uint32_t sampleBytes;
};
constexpr std::uint32_t floatFlags = formatFlagIsFloat | formatFlagIsPacked;
constexpr std::uint32_t integerFlags = formatFlagIsSignedInteger | formatFlagIsPacked;
constexpr std::uint32_t planarFlag = 32;
constexpr std::array dumpedFormats = {
    DumpedFormat{"S16LE", 16, integerFlags, 2},
    DumpedFormat{"S24LE", 24, integerFlags, 3},
    DumpedFormat{"S24_32LE", 24, formatFlagIsSignedInteger, 4},
    DumpedFormat{"S32LE", 32, integerFlags, 4},
    DumpedFormat{"F32LE", 32, floatFlags, 4},
    DumpedFormat{"F32P", 32, floatFlags | planarFlag, 4},
};

/// A value that pw-dump prints plainly, or as a choice whose default is meant.
nlohmann::json plain(const nlohmann::json& value) {
    return value.is_object() && value.contains("default") ? value["default"] : value;
}

std::string described(const StreamDescription& format) {
    std::string text = std::to_string(format.sampleRate) + " Hz, id " + std::to_string(format.formatID);
    for (const std::uint32_t field :
         {format.formatFlags, format.bytesPerPacket, format.framesPerPacket, format.bytesPerFrame,
          format.channelsPerFrame, format.bitsPerChannel, format.reserved}) {
        text += " " + std::to_string(field);
    }
    return text;
}

}  // namespace

std::vector<AudioObjectID> AudioObserver::ids(AudioObjectID object, std::uint32_t selector) const {
    std::uint32_t size = 0;
    if (hardware_.getPropertyDataSize(object, output(selector), size) != noErr) return {};
    std::vector<AudioObjectID> found(size / sizeof(AudioObjectID));
    if (hardware_.getPropertyData(object, output(selector), size, found.data()) != noErr) return {};
    found.resize(size / sizeof(AudioObjectID));
    return found;
}

std::vector<AudioObjectID> AudioObserver::devices() const {
    return ids(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
}

std::vector<AudioObjectID> AudioObserver::processes() const {
    return ids(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList);
}

AudioObjectID AudioObserver::defaultOutput() const {
    return number(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice).value_or(0);
}

AudioObjectID AudioObserver::deviceByUID(const std::string& uid) const {
    for (const AudioObjectID device : devices()) {
        if (text(device, kAudioDevicePropertyDeviceUID) == uid) return device;
    }
    return 0;
}

std::optional<std::string> AudioObserver::text(AudioObjectID object, std::uint32_t selector) const {
    std::optional<std::string> found;
    if (hardware_.getPropertyText(object, global(selector), found) != noErr) return std::nullopt;
    return found;
}

std::optional<std::uint32_t> AudioObserver::number(AudioObjectID object, std::uint32_t selector) const {
    std::uint32_t value = 0;
    std::uint32_t size = sizeof value;
    if (hardware_.getPropertyData(object, global(selector), size, &value) != noErr) return std::nullopt;
    return value;
}

std::optional<StreamDescription> AudioObserver::format(AudioObjectID device, std::uint32_t selector) const {
    const auto streams = ids(device, kAudioDevicePropertyStreams);
    if (streams.empty()) return std::nullopt;
    StreamDescription format;
    std::uint32_t size = sizeof format;
    if (hardware_.getPropertyData(streams.front(), global(selector), size, &format) != noErr) {
        return std::nullopt;
    }
    return format;
}

double AudioObserver::virtualRate(AudioObjectID device) const {
    const auto found = format(device, kAudioStreamPropertyVirtualFormat);
    return found ? found->sampleRate : 0;
}

double AudioObserver::physicalRate(AudioObjectID device) const {
    const auto found = format(device, kAudioStreamPropertyPhysicalFormat);
    return found ? found->sampleRate : 0;
}

bool AudioObserver::isRunning(AudioObjectID device) const {
    return number(device, kAudioDevicePropertyDeviceIsRunningSomewhere).value_or(0) != 0;
}

AudioObjectID AudioObserver::processByPID(std::int32_t pid) const {
    for (const AudioObjectID process : processes()) {
        if (number(process, kAudioProcessPropertyPID) == static_cast<std::uint32_t>(pid)) return process;
    }
    return 0;
}

bool AudioObserver::plays(AudioObjectID process) const {
    return number(process, kAudioProcessPropertyIsRunningOutput).value_or(0) != 0;
}

StreamDescription dumpedFormat(const nlohmann::json& node) {
    const auto parameters = node.value("/info/params"_json_pointer, nlohmann::json::object());
    auto formats = parameters.value("Format", nlohmann::json::array());
    if (formats.empty()) formats = parameters.value("EnumFormat", nlohmann::json::array());
    StreamDescription description;
    if (formats.empty()) return description;
    const nlohmann::json& format = formats.front();
    const std::string name = plain(format["format"]).get<std::string>();
    for (const DumpedFormat& row : dumpedFormats) {
        if (name != row.name) continue;
        description.formatID = formatLinearPCM;
        description.bitsPerChannel = row.bits;
        description.formatFlags = row.flags;
        description.bytesPerFrame = row.sampleBytes;
    }
    if (format.contains("rate")) description.sampleRate = plain(format["rate"]).get<double>();
    description.channelsPerFrame = plain(format["channels"]).get<std::uint32_t>();
    if ((description.formatFlags & planarFlag) == 0) {
        description.bytesPerFrame *= description.channelsPerFrame;
    }
    description.framesPerPacket = 1;
    description.bytesPerPacket = description.bytesPerFrame;
    return description;
}

std::string differencesFromDump(const AudioObserver& observer, const nlohmann::json& dump,
                                const std::string& name) {
    const nlohmann::json node = nodeNamed(dump, name);
    const AudioObjectID device = observer.deviceByUID(name);
    if (node.is_null() || device == 0) {
        return name + ": in the dump " + (node.is_null() ? "no" : "yes") + ", as a device " +
               (device == 0 ? "no" : "yes");
    }
    std::string differences;
    const auto shown = observer.text(device, kAudioObjectPropertyName).value_or("(none)");
    const auto description = node.value("/info/props/node.description"_json_pointer, name);
    if (shown != description) differences += "name " + shown + ", dumped " + description + "\n";
    const bool runs = node.value("/info/state"_json_pointer, "") == "running";
    if (observer.isRunning(device) != runs) {
        differences += runs ? "runs only in the dump\n" : "runs only as read\n";
    }
    const auto physical =
        observer.format(device, kAudioStreamPropertyPhysicalFormat).value_or(StreamDescription{});
    StreamDescription dumped = dumpedFormat(node);
    // From PipeWire 1.4 on, a combined sink leaves its rate to the graph, of which the dump does not tell.
    if (dumped.sampleRate == 0) dumped.sampleRate = physical.sampleRate;
    if (std::memcmp(&physical, &dumped, sizeof dumped) != 0) {
        differences += "format " + described(physical) + "\ndumped " + described(dumped) + "\n";
    }
    return differences;
}

}  // namespace purlock::test
