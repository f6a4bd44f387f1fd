#include "audio/bluetooth_devices.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/text.h"

namespace purlock::BluetoothDevices {

namespace {

bool standsIn(const std::optional<std::string>& text, std::string_view lowercasedName) {
    return hasText(text) && contains(lowercasedName, lowercased(*text));
}

std::string shownName(const PairedBluetoothDevice& device) {
    if (hasText(device.name)) return *device.name;
    if (hasText(device.nameOrAddress)) return *device.nameOrAddress;
    return "Bluetooth device";
}

}  // namespace

std::optional<BluetoothDeviceInfo> infoMatchingName(std::string_view name, BluetoothStack& stack) {
    auto connected = stack.pairedDevices().value_or(std::vector<PairedBluetoothDevice>{});
    std::erase_if(connected, [](const PairedBluetoothDevice& device) { return !device.isConnected; });
    if (connected.empty()) return std::nullopt;
    const std::string wanted = lowercased(name);
    const auto match = std::ranges::find_if(connected, [&](const PairedBluetoothDevice& device) {
        return standsIn(device.name, wanted) || standsIn(device.nameOrAddress, wanted);
    });
    const PairedBluetoothDevice& taken = match != connected.end() ? *match : connected.front();
    return BluetoothDeviceInfo{shownName(taken), taken.addressString, std::nullopt};
}

}  // namespace purlock::BluetoothDevices
