#pragma once

#include <memory>
#include <string>

#include "audio/audio_hardware.h"
#include "base/running_applications.h"

namespace purlock::host_linux {

class AnswerPublisher;

/// The audio hardware layer over a PipeWire server, as clients see it from version 0.3.65 on.
///
/// Owned by the host. It has one connection and one loop thread; every read is answered from the last
/// consistent picture, without waiting for the server or for the loop. While there is no server, or one that
/// does not answer, there are no devices and the default is 0; the connection is made again when the server
/// returns. Object ids are never used twice. Name, UID, transport, running flag, nominal rate, streams, both
/// formats and the process objects can be read and listened to; everything else is an unknown property.
class PipeWireHardware final : public AudioHardware {
  public:
    struct Places {
        std::string processFileSystem = "/proc";
        std::string soundDevices = "/dev/snd";
    };

    /// Connects in the background; the environment names the server (PIPEWIRE_REMOTE, XDG_RUNTIME_DIR).
    /// `applications` must live as long as this does, and is asked on the loop's thread.
    explicit PipeWireHardware(RunningApplications& applications) : PipeWireHardware(applications, Places{}) {}
    PipeWireHardware(RunningApplications& applications, const Places& places);

    /// Ends the loop; blocks under way on their queues may still run.
    ~PipeWireHardware() override;

    HardwareStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                       std::uint32_t& size) override;
    HardwareStatus getPropertyData(AudioObjectID object, const PropertyAddress& address, std::uint32_t& size,
                                   void* data) override;
    HardwareStatus getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                   std::optional<std::string>& text) override;
    std::optional<MixerWork> mixerWork(AudioObjectID device) override;

    /// Reads from the picture as it is at this moment, however long they take.
    std::shared_ptr<AudioProperties> picture() override;

    HardwareStatus addPropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                            const std::shared_ptr<SerialQueue>& queue,
                                            const ListenerBlock& block) override;
    HardwareStatus removePropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                               const std::shared_ptr<SerialQueue>& queue,
                                               const ListenerBlock& block) override;

  private:
    const std::unique_ptr<AnswerPublisher> publisher_;
};

}  // namespace purlock::host_linux
