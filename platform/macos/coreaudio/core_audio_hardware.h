#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "audio/audio_hardware.h"

namespace purlock::host_macos {

/// The CoreAudio HAL, passed through: object ids, addresses, sizes and statuses are its own.
///
/// Owned by the host. Any thread; the HAL answers each call itself. The queues of listeners must be dispatch
/// queues of this host.
class CoreAudioHardware final : public AudioHardware {
  public:
    CoreAudioHardware();

    /// Removes the listeners that are still installed.
    ~CoreAudioHardware() override;

    HardwareStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                       std::uint32_t& size) override;
    HardwareStatus getPropertyData(AudioObjectID object, const PropertyAddress& address, std::uint32_t& size,
                                   void* data) override;
    HardwareStatus getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                   std::optional<std::string>& text) override;
    HardwareStatus addPropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                            const std::shared_ptr<SerialQueue>& queue,
                                            const ListenerBlock& block) override;
    HardwareStatus removePropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                               const std::shared_ptr<SerialQueue>& queue,
                                               const ListenerBlock& block) override;

  private:
    class InstalledListener;

    std::mutex mutex_;
    std::vector<std::unique_ptr<InstalledListener>> listeners_;
};

}  // namespace purlock::host_macos
