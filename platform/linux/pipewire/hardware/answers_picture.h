#pragma once

#include <memory>
#include <utility>

#include "audio/audio_hardware.h"
#include "platform/linux/pipewire/hardware/answers.h"

namespace purlock::host_linux {

/// The properties of one moment, for a reader that wants them all of the same one. Keeps the answers; any
/// thread.
class AnswersPicture final : public AudioProperties {
  public:
    explicit AnswersPicture(std::shared_ptr<const Answers> answers) : answers_(std::move(answers)) {}

    HardwareStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                       std::uint32_t& size) override;
    HardwareStatus getPropertyData(AudioObjectID object, const PropertyAddress& address, std::uint32_t& size,
                                   void* data) override;
    HardwareStatus getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                   std::optional<std::string>& text) override;
    std::optional<MixerWork> mixerWork(AudioObjectID device) override;

  private:
    const std::shared_ptr<const Answers> answers_;
};

}  // namespace purlock::host_linux
