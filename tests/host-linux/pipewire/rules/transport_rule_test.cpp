#include "platform/linux/pipewire/rules/transport_rule.h"

#include <gtest/gtest.h>

#include "platform/linux/pipewire/rules/dictionaries.h"
#include "tests/support/dictionary.h"

namespace purlock::host_linux {
namespace {

using Entries = std::vector<test::Dictionary::Entry>;

struct TransportCase {
    const char* name;
    Entries node;
    std::optional<Entries> device;
    std::uint32_t expected;
    EldConnection display = EldConnection::unknown;
    bool feedsSeveral = false;
};

TEST(TransportRule, Rows) {
    const Entries pcm = {{"api.alsa.pcm.card", "0"}, {"api.alsa.pcm.device", "0"}, {"device.api", "alsa"}};
    const Entries display = {{"api.alsa.pcm.card", "0"},
                             {"api.alsa.pcm.device", "3"},
                             {"device.api", "alsa"},
                             {"device.profile.name", "hdmi-stereo"}};
    const Entries digital = {{"api.alsa.pcm.card", "0"},
                             {"api.alsa.pcm.device", "1"},
                             {"device.api", "alsa"},
                             {"device.profile.name", "iec958-stereo"}};
    const auto on = [](const char* bus) { return Entries{{"device.api", "alsa"}, {"device.bus", bus}}; };
    const auto by = [](const char* bus, const char* driver) {
        return Entries{{"device.api", "alsa"}, {"device.bus", bus}, {"alsa.driver_name", driver}};
    };
    const TransportCase cases[] = {
        {"USB DAC", pcm, on("usb"), kAudioDeviceTransportTypeUSB},
        {"USB by driver", pcm, Entries{{"device.api", "alsa"}, {"alsa.driver_name", "snd_usb_audio"}},
         kAudioDeviceTransportTypeUSB},
        {"USB, digital profile", digital, on("usb"), kAudioDeviceTransportTypeUSB},
        {"built-in", pcm, by("pci", "snd_hda_intel"), kAudioDeviceTransportTypeBuiltIn},
        {"built-in behind a DSP", pcm, by("pci", "snd_sof_pci_intel_tgl"), kAudioDeviceTransportTypeBuiltIn},
        {"built-in, by its card's name", pcm, by("platform", "sof-hda-dsp"),
         kAudioDeviceTransportTypeBuiltIn},
        {"built-in, digital", digital, by("pci", "snd_hda_intel"), kAudioDeviceTransportTypePCI},
        {"a card in a slot", pcm, by("pci", "snd_oxygen"), kAudioDeviceTransportTypePCI},
        {"a card in a slot without a driver's name", pcm, on("pci"), kAudioDeviceTransportTypePCI},
        {"a board on I2S", pcm, by("platform", "snd_soc_rpi_simple_soundcard"), 0},
        {"HDMI", display, on("pci"), kAudioDeviceTransportTypeHDMI, EldConnection::hdmi},
        {"DisplayPort", display, on("pci"), kAudioDeviceTransportTypeDisplayPort, EldConnection::displayPort},
        {"a display without a monitor", display, on("pci"), kAudioDeviceTransportTypeHDMI},
        {"FireWire", pcm, on("firewire"), fourCharCode("1394")},
        {"loopback card", pcm, Entries{{"device.api", "alsa"}, {"alsa.driver_name", "snd_aloop"}},
         kAudioDeviceTransportTypeVirtual},
        {"a card of no known kind", pcm, on(""), 0},
        {"Bluetooth",
         {{"device.api", "bluez5"}},
         Entries{{"device.api", "bluez5"}, {"device.bus", "bluetooth"}},
         kAudioDeviceTransportTypeBluetooth},
        {"Bluetooth by key",
         {{"api.bluez5.address", "00:11"}},
         std::nullopt,
         kAudioDeviceTransportTypeBluetooth},
        {"AirPlay",
         {{"node.name", "raop_sink.Room.local.1"}},
         std::nullopt,
         kAudioDeviceTransportTypeAirPlay},
        {"AirPlay by key", {{"raop.ip", "10.0.0.2"}}, std::nullopt, kAudioDeviceTransportTypeAirPlay},
        {"null sink",
         {{"factory.name", "support.null-audio-sink"}},
         std::nullopt,
         kAudioDeviceTransportTypeVirtual},
        {"tunnel", {{"node.virtual", "true"}}, std::nullopt, kAudioDeviceTransportTypeVirtual},
        {"combined",
         {{"node.virtual", "true"}},
         std::nullopt,
         kAudioDeviceTransportTypeAggregate,
         EldConnection::unknown,
         true},
        {"a device of a strange kind", {}, Entries{{"device.api", "avb"}}, 0},
    };
    for (const TransportCase& row : cases) {
        SCOPED_TRACE(row.name);
        const NodeProperties node = nodeProperties(test::Dictionary(row.node).get());
        DeviceProperties device;
        if (row.device) device = deviceProperties(test::Dictionary(*row.device).get());
        const TransportFacts facts{row.device ? &device : nullptr, row.feedsSeveral, row.display};
        EXPECT_EQ(transportCode(node, facts), row.expected);
    }
}

}  // namespace
}  // namespace purlock::host_linux
