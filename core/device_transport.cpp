#include "core/device_transport.h"

namespace purlock {

std::string_view rawValue(DeviceTransport transport) {
    switch (transport) {
        case DeviceTransport::usb:
            return "USB";
        case DeviceTransport::bluetooth:
            return "Bluetooth";
        case DeviceTransport::airplay:
            return "AirPlay";
        case DeviceTransport::hdmi:
            return "HDMI";
        case DeviceTransport::builtIn:
            return "Built-in";
        case DeviceTransport::aggregate:
            return "Aggregate";
        case DeviceTransport::virtualDevice:
            return "Virtual";
        case DeviceTransport::displayPort:
            return "DisplayPort";
        case DeviceTransport::unknown:
            break;
    }
    return "Unknown";
}

std::optional<DeviceTransport> deviceTransportFromRawValue(std::string_view text) {
    for (const DeviceTransport transport : allDeviceTransports) {
        if (rawValue(transport) == text) return transport;
    }
    return std::nullopt;
}

}  // namespace purlock
