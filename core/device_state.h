#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/audio_format.h"
#include "core/device_transport.h"
#include "core/mixer_work.h"

namespace purlock {

/// What the USB descriptors say about a USB output device.
struct USBDeviceInfo {
    std::optional<std::string> vendorName;
    std::optional<std::string> productName;
    std::optional<std::string> usbClass;  // a short text, such as "USB Audio"
    std::vector<double> advertisedRates;  // Hz; may be empty

    bool operator==(const USBDeviceInfo&) const = default;
};

/// What the Bluetooth stack says about a Bluetooth output device.
struct BluetoothDeviceInfo {
    std::string name;
    std::optional<std::string> address;  // as the stack prints it
    std::optional<int> rssi;             // received signal strength, as the stack reports it

    bool operator==(const BluetoothDeviceInfo&) const = default;
};

/// One observation of the watched output device. Where it is passed as an optional, absent means that there
/// is no output device.
struct DeviceState {
    std::uint32_t deviceID = 0;  // the hardware layer's object id
    std::string name;
    std::string uid;  // persistent; what the user pins

    /// The two formats of the device's first output stream: the one in which the system's mixer takes audio
    /// from applications, and the one in which the device is clocked and fed. ("virtual" alone is a word of
    /// the language.)
    std::optional<AudioFormat> virtualFormat;
    std::optional<AudioFormat> physicalFormat;

    bool isRunning = false;
    DeviceTransport transportType = DeviceTransport::unknown;
    std::optional<USBDeviceInfo> usbInfo;
    std::optional<BluetoothDeviceInfo> bluetoothInfo;

    /// What the mixer does to the samples besides converting them; absent on a host that cannot know.
    std::optional<MixerWork> mixerWork;

    bool operator==(const DeviceState&) const = default;
};

}  // namespace purlock
