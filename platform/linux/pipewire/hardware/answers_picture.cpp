#include "platform/linux/pipewire/hardware/answers_picture.h"

#include <algorithm>
#include <cstring>

namespace purlock::host_linux {

HardwareStatus AnswersPicture::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                                   std::uint32_t& size) {
    const Answers::Value value = answers_->value(object, address);
    if (value.status == noErr) {
        size = static_cast<std::uint32_t>(value.bytes.size());
        return noErr;
    }
    // A text is read as a reference.
    const Answers::Text text = answers_->text(object, address);
    if (text.status == noErr) size = sizeof(void*);
    return text.status;
}

HardwareStatus AnswersPicture::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                               std::uint32_t& size, void* data) {
    const Answers::Value value = answers_->value(object, address);
    if (value.status != noErr) return value.status;
    // Copies as many whole ids of a list as there is room for; other values whole or not at all.
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

HardwareStatus AnswersPicture::getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                               std::optional<std::string>& text) {
    const Answers::Text found = answers_->text(object, address);
    if (found.status != noErr) return found.status;
    text.reset();
    if (found.text != nullptr) text = *found.text;
    return noErr;
}

std::optional<MixerWork> AnswersPicture::mixerWork(AudioObjectID device) {
    return answers_->mixerWork(device);
}

}  // namespace purlock::host_linux
