#include "platform/linux/pipewire/pipewire_hardware.h"

#include <algorithm>
#include <cstring>

#include "platform/linux/pipewire/worker.h"

namespace purlock::host_linux {

PipeWireHardware::PipeWireHardware(RunningApplications& applications, const Places& places)
    : worker_(std::make_unique<Worker>(applications, places)) {}

PipeWireHardware::~PipeWireHardware() = default;

HardwareStatus PipeWireHardware::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                                     std::uint32_t& size) {
    const auto answers = worker_->answers.get();
    const Answers::Value value = answers->value(object, address);
    if (value.status == noErr) {
        size = static_cast<std::uint32_t>(value.bytes.size());
        return noErr;
    }
    // A text is read as a reference.
    const Answers::Text text = answers->text(object, address);
    if (text.status == noErr) size = sizeof(void*);
    return text.status;
}

HardwareStatus PipeWireHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                                 std::uint32_t& size, void* data) {
    worker_->noticeRead();
    const auto answers = worker_->answers.get();
    const Answers::Value value = answers->value(object, address);
    if (value.status != noErr) return value.status;
    // Of a list, as many whole ids as there is room for; of anything else, all or nothing.
    const bool isList = address.selector == kAudioHardwarePropertyDevices ||
                        address.selector == kAudioHardwarePropertyProcessObjectList ||
                        address.selector == kAudioDevicePropertyStreams ||
                        address.selector == kAudioProcessPropertyDevices;
    const std::size_t room = isList ? size - size % sizeof(AudioObjectID) : size;
    if (!isList && room < value.bytes.size()) return kAudioHardwareBadPropertySizeError;
    const std::size_t count = std::min(room, value.bytes.size());
    if (count > 0) std::memcpy(data, value.bytes.data(), count);
    size = static_cast<std::uint32_t>(count);
    return noErr;
}

HardwareStatus PipeWireHardware::getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                                 std::optional<std::string>& text) {
    const auto answers = worker_->answers.get();
    const Answers::Text found = answers->text(object, address);
    if (found.status != noErr) return found.status;
    text.reset();
    if (found.text != nullptr) text = *found.text;
    return noErr;
}

HardwareStatus PipeWireHardware::addPropertyListenerBlock(AudioObjectID object,
                                                          const PropertyAddress& address,
                                                          const std::shared_ptr<SerialQueue>& queue,
                                                          const ListenerBlock& block) {
    if (!queue || !block || !*block) return kAudioHardwareUnknownPropertyError;
    if (!worker_->answers.get()->holds(object)) return kAudioHardwareBadObjectError;
    worker_->listeners.add(object, address, queue, block);
    return noErr;
}

HardwareStatus PipeWireHardware::removePropertyListenerBlock(AudioObjectID object,
                                                             const PropertyAddress& address,
                                                             const std::shared_ptr<SerialQueue>& queue,
                                                             const ListenerBlock& block) {
    return worker_->listeners.remove(object, address, queue, block) ? noErr : kAudioHardwareBadObjectError;
}

}  // namespace purlock::host_linux
