#include "audio/transport_type.h"

#include "audio/property_reader.h"

namespace purlock {

DeviceTransport transportType(AudioProperties& hardware, AudioObjectID device) {
    std::uint32_t code = 0;
    if (readValue(hardware, device, kAudioDevicePropertyTransportType, code) != noErr) {
        return DeviceTransport::unknown;
    }
    switch (code) {
        case kAudioDeviceTransportTypeUSB:
            return DeviceTransport::usb;
        case kAudioDeviceTransportTypeBluetooth:
            return DeviceTransport::bluetooth;
        case kAudioDeviceTransportTypeBluetoothLE:
            return DeviceTransport::bluetooth;
        case kAudioDeviceTransportTypeAirPlay:
            return DeviceTransport::airplay;
        case kAudioDeviceTransportTypeHDMI:
            return DeviceTransport::hdmi;
        case kAudioDeviceTransportTypeBuiltIn:
            return DeviceTransport::builtIn;
        case kAudioDeviceTransportTypeAggregate:
            return DeviceTransport::aggregate;
        case kAudioDeviceTransportTypeVirtual:
            return DeviceTransport::virtualDevice;
        case kAudioDeviceTransportTypeDisplayPort:
            return DeviceTransport::displayPort;
        default:
            return DeviceTransport::unknown;
    }
}

}  // namespace purlock
