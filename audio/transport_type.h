#pragma once

#include "audio/audio_hardware.h"
#include "core/device_transport.h"

namespace purlock {

/// How a device is attached, from the hardware layer's transport code; `unknown` when it cannot be read, and
/// for codes that have no case of their own (Thunderbolt, FireWire, PCI, AVB).
DeviceTransport transportType(AudioProperties& hardware, AudioObjectID device);

}  // namespace purlock
