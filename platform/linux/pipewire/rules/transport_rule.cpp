#include "platform/linux/pipewire/rules/transport_rule.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "audio/audio_hardware.h"
#include "base/text.h"

namespace purlock::host_linux {

namespace {

const std::string& either(const std::string& first, const std::string& second) {
    return first.empty() ? second : first;
}

bool isDigitalOutput(const NodeProperties& node) {
    return contains(lowercased(node.profile), "iec958") || contains(lowercased(node.pcmNames), "iec958") ||
           contains(lowercased(node.name), "iec958");
}

/// Cards that exist in software only: loopback and dummy drivers.
bool isSoftwareCard(std::string_view driver) {
    constexpr std::array drivers = {"snd_aloop", "Loopback", "snd_dummy", "Dummy"};
    return std::ranges::find(drivers, driver) != drivers.end();
}

/// The drivers of sound that is part of the machine, by the names of their modules and of their cards. Cards
/// in slots and boards on a connector have other drivers.
bool isIntegratedSound(std::string_view driver) {
    constexpr std::array beginnings = {
        "snd_hda_intel", "HDA-Intel",   "snd_hda_tegra",
        "tegra-hda",  // Intel's High Definition Audio
        "snd_sof",       "sof-",        "snd_soc_avs",
        "avs_",  // Intel's and others' DSPs
        "snd_soc_skl",   "snd_soc_sst", "bytcr",
        "cht-",  // older ones of Intel
        "snd_acp",       "snd_pci_acp", "snd_rn_pci",
        "acp",  // AMD
        "snd_soc_sc",    "snd_soc_x1e", "snd_soc_macaudio",
        "macaudio",                  // laptops with ARM processors
        "snd_bcm2835",   "bcm2835",  // the Raspberry Pi's own jack
    };
    return std::ranges::any_of(beginnings, [driver](auto each) { return driver.starts_with(each); });
}

std::uint32_t hardwareTransport(const NodeProperties& node, const TransportFacts& facts,
                                std::string_view bus) {
    const std::string_view driver =
        node.driverName.empty() && facts.device != nullptr ? facts.device->cardDriver : node.driverName;
    const bool isNamedUSB = bus.empty() && node.name.starts_with("alsa_output.usb-");
    if (bus == "usb" || driver == "snd_usb_audio" || isNamedUSB) {
        return kAudioDeviceTransportTypeUSB;
    }
    if (bus == "bluetooth") return kAudioDeviceTransportTypeBluetooth;
    if (isDisplayOutput(node)) {
        return facts.display == EldConnection::displayPort ? kAudioDeviceTransportTypeDisplayPort
                                                           : kAudioDeviceTransportTypeHDMI;
    }
    if (bus == "firewire") return fourCharCode("1394");
    if (isIntegratedSound(driver) && !isDigitalOutput(node)) return kAudioDeviceTransportTypeBuiltIn;
    if (bus == "pci") return kAudioDeviceTransportTypePCI;
    return isSoftwareCard(driver) ? kAudioDeviceTransportTypeVirtual : 0;
}

}  // namespace

bool isDisplayOutput(const NodeProperties& node) {
    const std::string names = lowercased(joined({node.pcmNames, "\n", node.profile, "\n", node.name}));
    return node.pcm && (contains(names, "hdmi") || contains(names, "displayport"));
}

std::uint32_t transportCode(const NodeProperties& node, const TransportFacts& facts) {
    static const std::string none;
    const std::string& api = either(node.deviceApi, facts.device != nullptr ? facts.device->api : none);
    const std::string& bus = either(node.deviceBus, facts.device != nullptr ? facts.device->bus : none);
    if (node.hasRaopKeys || node.name.starts_with("raop_sink.") || node.name.starts_with("raop-sink-")) {
        return kAudioDeviceTransportTypeAirPlay;
    }
    if (api == "bluez5" || node.hasBluezKeys || node.factory.starts_with("api.bluez5.")) {
        return kAudioDeviceTransportTypeBluetooth;
    }
    if (facts.feedsSeveral) return kAudioDeviceTransportTypeAggregate;
    if (api == "alsa" || node.pcm || node.factory.starts_with("api.alsa.")) {
        return hardwareTransport(node, facts, bus);
    }
    // A node that belongs to no device is made of software alone.
    return facts.device == nullptr ? kAudioDeviceTransportTypeVirtual : 0;
}

}  // namespace purlock::host_linux
