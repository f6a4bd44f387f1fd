#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/four_char_code.h"
#include "base/serial_queue.h"
#include "core/mixer_work.h"

namespace purlock {

/// An object of the hardware layer: the system itself, a device, a stream, a process. 0 is none.
using AudioObjectID = std::uint32_t;

/// 0 is success, anything else a failure.
using HardwareStatus = std::int32_t;
inline constexpr HardwareStatus noErr = 0;

/// Which property of an object: what, for which side of it, and for which of its elements (here always the
/// main one).
struct PropertyAddress {
    std::uint32_t selector = 0;
    std::uint32_t scope = 0;
    std::uint32_t element = 0;

    bool operator==(const PropertyAddress&) const = default;
};

/// Called with nothing: the one that is notified reads again. Its identity, not its content, names it when it
/// is removed.
using ListenerBlock = std::shared_ptr<const std::function<void()>>;

/// A stream format as the hardware layer lays it out in memory: 40 bytes, CoreAudio's
/// AudioStreamBasicDescription.
struct StreamDescription {
    double sampleRate = 0;  // Hz
    std::uint32_t formatID = 0;
    std::uint32_t formatFlags = 0;
    std::uint32_t bytesPerPacket = 0;
    std::uint32_t framesPerPacket = 0;
    std::uint32_t bytesPerFrame = 0;
    std::uint32_t channelsPerFrame = 0;
    std::uint32_t bitsPerChannel = 0;
    std::uint32_t reserved = 0;
};
static_assert(sizeof(StreamDescription) == 40);

/// The properties of the hardware layer's objects. Every call may come from any thread, answers at once, and
/// fails with a status when the object has vanished.
class AudioProperties {
  public:
    AudioProperties() = default;
    virtual ~AudioProperties() = default;
    AudioProperties(const AudioProperties&) = delete;
    AudioProperties& operator=(const AudioProperties&) = delete;

    /// The size in bytes that the property's value has now.
    virtual HardwareStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                               std::uint32_t& size) = 0;

    /// Writes at most `size` bytes of the value to `data`, and the number written to `size`.
    virtual HardwareStatus getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                           std::uint32_t& size, void* data) = 0;

    /// Reads a property whose value is a reference to a text; on success `text` is absent for a null
    /// reference.
    virtual HardwareStatus getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                           std::optional<std::string>& text) = 0;

    /// What the mixer does to the samples on their way to a device; absent where the layer cannot know.
    virtual std::optional<MixerWork> mixerWork(AudioObjectID /*device*/) { return std::nullopt; }

    /// The properties as one reader is to read them from its first read to its last: all of one moment where
    /// the layer can hold one still, else the layer itself, which must then outlive the reader.
    virtual std::shared_ptr<AudioProperties> picture() { return {std::shared_ptr<void>(), this}; }
};

/// The audio hardware layer: objects with properties that can be read and watched, as CoreAudio's HAL has
/// them. Owned by the host, which outlives its users. Any thread.
class AudioHardware : public AudioProperties {
  public:
    /// Has `block` run on `queue` after every change of the property, until the same object, address, queue
    /// and block are removed. The layer keeps the block and the queue until then. A notification that was
    /// under way when the listener was removed may still arrive.
    virtual HardwareStatus addPropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                                    const std::shared_ptr<SerialQueue>& queue,
                                                    const ListenerBlock& block) = 0;
    virtual HardwareStatus removePropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                                       const std::shared_ptr<SerialQueue>& queue,
                                                       const ListenerBlock& block) = 0;
};

// The codes of the hardware layer, by the names that CoreAudio gives them (AudioHardware.h,
// AudioHardwareBase.h).

inline constexpr AudioObjectID kAudioObjectSystemObject = 1;

inline constexpr std::uint32_t kAudioObjectPropertyScopeGlobal = fourCharCode("glob");
inline constexpr std::uint32_t kAudioObjectPropertyScopeOutput = fourCharCode("outp");
inline constexpr std::uint32_t kAudioObjectPropertyElementMain = 0;

inline constexpr std::uint32_t kAudioHardwarePropertyDevices = fourCharCode("dev#");
inline constexpr std::uint32_t kAudioHardwarePropertyDefaultOutputDevice = fourCharCode("dOut");
inline constexpr std::uint32_t kAudioHardwarePropertyProcessObjectList = fourCharCode("prs#");
inline constexpr std::uint32_t kAudioObjectPropertyName = fourCharCode("lnam");
inline constexpr std::uint32_t kAudioDevicePropertyDeviceUID = fourCharCode("uid ");
inline constexpr std::uint32_t kAudioDevicePropertyTransportType = fourCharCode("tran");
inline constexpr std::uint32_t kAudioDevicePropertyDeviceIsRunningSomewhere = fourCharCode("gone");
inline constexpr std::uint32_t kAudioDevicePropertyNominalSampleRate = fourCharCode("nsrt");
inline constexpr std::uint32_t kAudioDevicePropertyStreams = fourCharCode("stm#");
inline constexpr std::uint32_t kAudioStreamPropertyVirtualFormat = fourCharCode("sfmt");
inline constexpr std::uint32_t kAudioStreamPropertyPhysicalFormat = fourCharCode("pft ");
inline constexpr std::uint32_t kAudioProcessPropertyPID = fourCharCode("ppid");
inline constexpr std::uint32_t kAudioProcessPropertyBundleID = fourCharCode("pbid");
inline constexpr std::uint32_t kAudioProcessPropertyIsRunningOutput = fourCharCode("piro");
inline constexpr std::uint32_t kAudioProcessPropertyDevices = fourCharCode("pdv#");

inline constexpr std::uint32_t kAudioDeviceTransportTypeUSB = fourCharCode("usb ");
inline constexpr std::uint32_t kAudioDeviceTransportTypeBluetooth = fourCharCode("blue");
inline constexpr std::uint32_t kAudioDeviceTransportTypeBluetoothLE = fourCharCode("blea");
inline constexpr std::uint32_t kAudioDeviceTransportTypeAirPlay = fourCharCode("airp");
inline constexpr std::uint32_t kAudioDeviceTransportTypeHDMI = fourCharCode("hdmi");
inline constexpr std::uint32_t kAudioDeviceTransportTypeBuiltIn = fourCharCode("bltn");
inline constexpr std::uint32_t kAudioDeviceTransportTypeAggregate = fourCharCode("grup");
inline constexpr std::uint32_t kAudioDeviceTransportTypeVirtual = fourCharCode("virt");
inline constexpr std::uint32_t kAudioDeviceTransportTypeDisplayPort = fourCharCode("dprt");
inline constexpr std::uint32_t kAudioDeviceTransportTypePCI = fourCharCode("pci ");

/// What the layer answers for a property that the object does not have, and for an object that is not there.
inline constexpr HardwareStatus kAudioHardwareUnknownPropertyError =
    static_cast<HardwareStatus>(fourCharCode("who?"));
inline constexpr HardwareStatus kAudioHardwareBadObjectError =
    static_cast<HardwareStatus>(fourCharCode("!obj"));
inline constexpr HardwareStatus kAudioHardwareBadPropertySizeError =
    static_cast<HardwareStatus>(fourCharCode("!siz"));

}  // namespace purlock
