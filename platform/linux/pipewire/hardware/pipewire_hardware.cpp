#include "platform/linux/pipewire/hardware/pipewire_hardware.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/linux/pipewire/hardware/answer_publisher.h"

namespace purlock::host_linux {

namespace {

/// The properties of one moment, for a reader that wants them all of the same one. Keeps the answers; any
/// thread.
class AnswersPicture final : public AudioProperties {
  public:
    explicit AnswersPicture(std::shared_ptr<const Answers> answers) : answers_(std::move(answers)) {}

    HardwareStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                       std::uint32_t& size) override {
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

    HardwareStatus getPropertyData(AudioObjectID object, const PropertyAddress& address, std::uint32_t& size,
                                   void* data) override {
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

    HardwareStatus getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                   std::optional<std::string>& text) override {
        const Answers::Text found = answers_->text(object, address);
        if (found.status != noErr) return found.status;
        text.reset();
        if (found.text != nullptr) text = *found.text;
        return noErr;
    }

    std::optional<MixerWork> mixerWork(AudioObjectID device) override { return answers_->mixerWork(device); }

  private:
    const std::shared_ptr<const Answers> answers_;
};

}  // namespace

PipeWireHardware::PipeWireHardware(RunningApplications& applications, const Places& places)
    : publisher_(std::make_unique<AnswerPublisher>(applications, SoundCards(places.processFileSystem),
                                                   places.soundDevices)) {}

PipeWireHardware::~PipeWireHardware() = default;

std::shared_ptr<AudioProperties> PipeWireHardware::picture() {
    publisher_->noticeRead();
    return std::make_shared<AnswersPicture>(publisher_->answers.get());
}

HardwareStatus PipeWireHardware::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                                     std::uint32_t& size) {
    return picture()->getPropertyDataSize(object, address, size);
}

HardwareStatus PipeWireHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                                 std::uint32_t& size, void* data) {
    return picture()->getPropertyData(object, address, size, data);
}

HardwareStatus PipeWireHardware::getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                                 std::optional<std::string>& text) {
    return picture()->getPropertyText(object, address, text);
}

std::optional<MixerWork> PipeWireHardware::mixerWork(AudioObjectID device) {
    return picture()->mixerWork(device);
}

HardwareStatus PipeWireHardware::addPropertyListenerBlock(AudioObjectID object,
                                                          const PropertyAddress& address,
                                                          const std::shared_ptr<SerialQueue>& queue,
                                                          const ListenerBlock& block) {
    if (!queue || !block || !*block) return kAudioHardwareUnknownPropertyError;
    if (!publisher_->answers.get()->holds(object)) return kAudioHardwareBadObjectError;
    publisher_->listeners.add(object, address, queue, block);
    return noErr;
}

HardwareStatus PipeWireHardware::removePropertyListenerBlock(AudioObjectID object,
                                                             const PropertyAddress& address,
                                                             const std::shared_ptr<SerialQueue>& queue,
                                                             const ListenerBlock& block) {
    return publisher_->listeners.remove(object, address, queue, block) ? noErr : kAudioHardwareBadObjectError;
}

}  // namespace purlock::host_linux
