#include "platform/linux/pipewire/hardware/pipewire_hardware.h"

#include "platform/linux/pipewire/hardware/answers_picture.h"
#include "platform/linux/pipewire/hardware/worker.h"

namespace purlock::host_linux {

PipeWireHardware::PipeWireHardware(RunningApplications& applications, const Places& places)
    : worker_(std::make_unique<Worker>(applications, places)) {}

PipeWireHardware::~PipeWireHardware() = default;

std::shared_ptr<AudioProperties> PipeWireHardware::picture() {
    worker_->noticeRead();
    return std::make_shared<AnswersPicture>(worker_->answers.get());
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
