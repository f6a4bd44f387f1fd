// What this system's readers of sysfs, /proc/asound and BlueZ say, as JSON: the USB devices, the paired
// Bluetooth devices, and the playback PCM of each card number that is given. For the cases that compare it
// with what other programs say.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>

#include "platform/linux/alsa/sound_cards.h"
#include "platform/linux/bluetooth/bluez_stack.h"
#include "platform/linux/dbus/bus_thread.h"
#include "platform/linux/usb/sysfs_usb_registry.h"

namespace {

using Json = nlohmann::json;
using namespace purlock;
using namespace purlock::host_linux;

Json textOrNull(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json();
}

Json describe(const PcmInfo& pcm) {
    Json json{{"isClosed", pcm.status.state == PcmState::closed}};
    if (pcm.parameters) {
        json["rate"] = pcm.parameters->sampleRate;
        json["channels"] = pcm.parameters->channels;
        json["bits"] = pcm.parameters->layout.bits;
    }
    if (pcm.owner) {
        json["process"] = pcm.owner->processIdentifier;
        json["command"] = pcm.owner->command;
    }
    return json;
}

/// Null when there is no BlueZ; it answers from what it has heard, so it gets a second to hear it.
Json pairedDevices() {
    using namespace std::chrono_literals;
    BusThread thread;
    BlueZStack stack(thread);
    for (int i = 0; i < 20 && !stack.pairedDevices(); ++i) std::this_thread::sleep_for(50ms);
    const auto known = stack.pairedDevices();
    if (!known) return {};
    Json devices = Json::array();
    for (const PairedBluetoothDevice& device : *known) {
        devices.push_back({{"name", textOrNull(device.name)},
                           {"address", textOrNull(device.addressString)},
                           {"isConnected", device.isConnected}});
    }
    return devices;
}

}  // namespace

int main(int argc, char** argv) {
    Json devices = Json::array();
    for (const UsbDevice& device : SysfsUsbRegistry().devices().value_or(std::vector<UsbDevice>{})) {
        devices.push_back(
            {{"vendor", textOrNull(device.vendorName)}, {"product", textOrNull(device.productName)}});
    }
    Json cards = Json::object();
    for (int i = 1; i < argc; ++i) {
        const auto number = static_cast<std::uint32_t>(std::strtoul(argv[i], nullptr, 10));
        cards[argv[i]] = describe(SoundCards().pcm({number, 0, 0}));
    }
    std::cout << Json{{"devices", devices}, {"cards", cards}, {"paired", pairedDevices()}} << '\n';
    return 0;
}
