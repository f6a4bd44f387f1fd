#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace purlock {

/// How the output device is attached.
enum class DeviceTransport {
    usb,
    bluetooth,
    airplay,
    hdmi,
    builtIn,
    aggregate,
    virtualDevice,
    displayPort,
    unknown
};

/// Every case, in declaration order.
inline constexpr std::array allDeviceTransports = {
    DeviceTransport::usb,           DeviceTransport::bluetooth,   DeviceTransport::airplay,
    DeviceTransport::hdmi,          DeviceTransport::builtIn,     DeviceTransport::aggregate,
    DeviceTransport::virtualDevice, DeviceTransport::displayPort, DeviceTransport::unknown};

/// The transport's text wherever it is printed: "USB", "Built-in".
std::string_view rawValue(DeviceTransport transport);

/// The case with exactly this raw value (letter case counts); absent for any other text.
std::optional<DeviceTransport> deviceTransportFromRawValue(std::string_view text);

}  // namespace purlock
