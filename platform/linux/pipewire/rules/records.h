#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/alsa/sound_cards.h"
#include "platform/linux/pipewire/rules/sound_format.h"

namespace purlock::host_linux {

// The mirror of the server's objects, as plain values. The server uses ids again; it never uses a serial
// twice.

enum class NodeRole {
    other,
    sink,
    duplex,
    source,
    outputStream,  // an application's sound on its way to a sink
};

/// A node's dictionary. Texts are well-formed UTF-8 of bounded length; empty means that the key is missing.
struct NodeProperties {
    NodeRole role = NodeRole::other;
    std::string name;
    std::string nick;
    std::string description;
    std::string factory;      // factory.name
    std::string linkGroup;    // nodes of one group pass sound on among themselves
    std::string application;  // application.id
    std::string profile;      // device.profile.name
    std::string deviceApi;
    std::string deviceBus;
    std::string pcmNames;         // the names of an ALSA PCM, one a line
    std::string driverName;       // the kernel's driver of an ALSA card
    std::string applicationName;  // application.name
    bool hasRaopKeys = false;
    bool hasBluezKeys = false;
    std::int32_t sessionPriority = 0;
    std::optional<std::int32_t> processIdentifier;  // application.process.id
    std::optional<std::uint32_t> device;
    std::optional<std::uint32_t> client;
    std::optional<std::uint32_t> requestedRate;  // node.rate, Hz
    std::optional<std::uint32_t> forcedRate;     // node.force-rate, Hz
    std::optional<std::uint32_t> setRate;        // audio.rate, Hz: the only one that a device is to run at
    std::string linkCodec;                       // api.bluez5.codec
    std::optional<PcmAddress> pcm;               // of ALSA hardware
    bool hasLibraryVolume = false;               // its PCM may go through the volume of ALSA's library
    bool isRouted = false;  // its device sets its volume, in the hardware as far as that can
    bool isJack = false;    // a client of the JACK library: ports of 32-bit float, no format

    bool isSink() const { return role == NodeRole::sink || role == NodeRole::duplex; }
    bool isStream() const { return role == NodeRole::outputStream; }

    bool operator==(const NodeProperties&) const = default;
};

enum class NodeState { creating, suspended, idle, running, error };

/// The `Props` parameter: what a node's converter does to the samples besides converting them.
struct MixerProperties {
    bool isMuted = false;
    bool isSoftMuted = false;
    double volume = 1;  // a factor on top of either list
    std::vector<float> channelVolumes;
    std::vector<float> softVolumes;  // what is left to be done in software where the device does the rest
    bool dithers = false;
    bool reachesMonitor = false;  // a sink's volume is applied to its monitor as well
    bool hasControls =
        false;  // a second parameter lists controls of its own: a filter's, or a card's settings

    bool operator==(const MixerProperties&) const = default;
};

/// Rates in Hz, both ends included.
struct RateRange {
    std::uint32_t least = 0;
    std::uint32_t greatest = 0;

    bool operator==(const RateRange&) const = default;
};

struct NodeRecord {
    std::uint32_t id = 0;
    NodeProperties properties;
    NodeState state = NodeState::creating;
    bool isArriving = false;                // named by the server, which has not told all of it yet
    std::optional<SoundFormat> format;      // negotiated; absent while suspended
    std::optional<SoundFormat> lastFormat;  // of its last run, while it still offers the same formats
    std::optional<SoundFormat> preferred;   // what it would be opened with
    std::vector<RateRange> offeredRates;    // of all its formats; empty when not told
    std::optional<double> clockRate;        // Hz, of the graph that drives it, as last seen in this run
    std::optional<std::uint32_t> driver;    // id of the node whose clock that is
    std::int64_t clockTime = 0;             // of the last cycle that was seen: the monotonic clock, ns
    MixerProperties mixing;
    std::vector<std::uint32_t> portPositions;  // SPA_AUDIO_CHANNEL_*, one a port; empty when not told
};

struct DeviceProperties {
    std::string api;
    std::string bus;
    std::string vendorName;
    std::string productName;
    std::string
        cardLongName;  // ALSA's own: for USB "<vendor> <product> at usb-...", as the device spells them
    std::string cardDriver;

    bool operator==(const DeviceProperties&) const = default;
};

struct ClientProperties {
    std::string api;                // "pipewire-pulse" for a client of the PulseAudio server, "jack"
    std::string application;        // application.id
    std::string applicationName;    // application.name
    std::string access;             // how the server lets it in
    std::string portalApplication;  // the identifier that a sandbox's portal gives it
    std::string host;               // application.process.host
    std::string serverType;         // of a PulseAudio client: "unix", "tcp"
    std::optional<std::int32_t> claimedProcess;    // application.process.id, the client's own word
    std::optional<std::int32_t> connectedProcess;  // pipewire.sec.pid, the kernel's word on the other end

    bool operator==(const ClientProperties&) const = default;
};

struct ClientRecord {
    std::uint64_t serial = 0;
    ClientProperties properties;
};

struct LinkRecord {
    std::uint32_t outputNode = 0;
    std::uint32_t inputNode = 0;
    std::uint32_t outputPort = 0;  // ids of ports; 0 when not told
    std::uint32_t inputPort = 0;
};

struct PortRecord {
    std::uint32_t node = 0;
    std::uint32_t number = 0;  // among the node's ports of its direction
    std::string channel;       // "FL"; empty or "UNK" when it has no place

    bool operator==(const PortRecord&) const = default;
};

/// The `settings` metadata.
struct ServerSettings {
    std::uint32_t clockRate = 48000;  // Hz
    std::uint32_t forcedRate = 0;     // 0 for none
    std::vector<std::uint32_t> allowedRates;

    /// The rate of a graph that nothing pulls elsewhere.
    std::uint32_t defaultRate() const { return forcedRate != 0 ? forcedRate : clockRate; }

    bool allows(double rate) const { return std::ranges::find(allowedRates, rate) != allowedRates.end(); }

    bool operator==(const ServerSettings&) const = default;
};

/// Everything that the mirror holds. Nodes are in the server's order, which is the order of their serials.
struct AudioGraph {
    std::map<std::uint64_t, NodeRecord> nodes;          // by serial
    std::map<std::uint32_t, DeviceProperties> devices;  // the rest by id
    std::map<std::uint32_t, ClientRecord> clients;
    std::map<std::uint32_t, LinkRecord> links;
    std::map<std::uint32_t, PortRecord> ports;
    ServerSettings settings;
    std::optional<std::string> defaultSinkName;

    bool isAnyRunning() const {
        return std::ranges::any_of(nodes,
                                   [](const auto& each) { return each.second.state == NodeState::running; });
    }
};

}  // namespace purlock::host_linux
