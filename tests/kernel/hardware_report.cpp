// What this system's readers of sysfs and /proc/asound say, as JSON: the USB devices, and the playback PCM of
// each card number that is given. For the cases that compare it with what other programs say.

#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "platform/linux/alsa/sound_cards.h"
#include "platform/linux/usb/sysfs_usb_registry.h"

namespace {

using Json = nlohmann::json;
using namespace purlock;
using namespace purlock::host_linux;

Json textOrNull(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json();
}

Json describe(const PcmView& pcm) {
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
    std::cout << Json{{"devices", devices}, {"cards", cards}} << '\n';
    return 0;
}
