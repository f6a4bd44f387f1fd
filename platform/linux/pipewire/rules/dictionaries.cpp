#include "platform/linux/pipewire/rules/dictionaries.h"

#include <spa/utils/dict.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <span>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t longestText = 1024;
constexpr std::uint32_t mostEntries = 1024;

std::span<const spa_dict_item> itemsOf(const spa_dict* dictionary) {
    if (dictionary == nullptr || dictionary->items == nullptr) return {};
    return {dictionary->items, std::min(dictionary->n_items, mostEntries)};
}

/// The dictionary's own bytes, up to the limit; empty for a missing key.
std::string_view rawText(const spa_dict* dictionary, std::string_view key) {
    for (const spa_dict_item& item : itemsOf(dictionary)) {
        if (item.key == nullptr || item.value == nullptr || key != item.key) continue;
        return {item.value, ::strnlen(item.value, longestText)};
    }
    return {};
}

template <typename Number>
std::optional<Number> numberFrom(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

template <typename Number>
std::optional<Number> number(const spa_dict* dictionary, std::string_view key) {
    return numberFrom<Number>(rawText(dictionary, key));
}

bool hasKeyWithPrefix(const spa_dict* dictionary, std::string_view prefix) {
    return std::ranges::any_of(itemsOf(dictionary), [prefix](const spa_dict_item& item) {
        return item.key != nullptr && std::string_view(item.key).starts_with(prefix);
    });
}

/// "Audio/Sink" and "Audio/Sink/Virtual" are sinks; what is internal to the session manager is none of ours.
bool isClass(std::string_view mediaClass, std::string_view wanted) {
    if (!mediaClass.starts_with(wanted) || mediaClass.ends_with("/Internal")) return false;
    return mediaClass.size() == wanted.size() || mediaClass[wanted.size()] == '/';
}

/// A JACK client is one node with ports both ways and no class.
bool isJackClient(const spa_dict* dictionary) {
    return rawText(dictionary, "media.class").empty() && rawText(dictionary, "client.api") == "jack";
}

NodeRole roleFromDictionary(const spa_dict* dictionary) {
    const std::string_view mediaClass = rawText(dictionary, "media.class");
    if (isClass(mediaClass, "Audio/Sink")) return NodeRole::sink;
    if (isClass(mediaClass, "Audio/Duplex")) return NodeRole::duplex;
    if (isClass(mediaClass, "Audio/Source")) return NodeRole::source;
    if (isClass(mediaClass, "Stream/Output/Audio")) return NodeRole::outputStream;
    if (isJackClient(dictionary)) return NodeRole::outputStream;
    return NodeRole::other;
}

/// "1/44100" asks for 44100 Hz.
std::optional<std::uint32_t> rateFromFraction(std::string_view text) {
    if (!text.starts_with("1/")) return std::nullopt;
    const auto rate = numberFrom<std::uint32_t>(text.substr(2));
    return rate != 0U ? rate : std::nullopt;
}

/// The PCMs that are configured with a volume of the library's for some cards, as those of built-in sound;
/// "hw", "hdmi" and "iec958" open the hardware.
bool hasLibraryVolume(std::string_view pcm) {
    return pcm.starts_with("front") || pcm.starts_with("surround") || pcm.starts_with("default") ||
           pcm.starts_with("sysdefault");
}

std::optional<PcmAddress> pcmAddress(const spa_dict* dictionary) {
    for (const std::string prefix : {"api.alsa.pcm.", "alsa."}) {
        const auto card = number<std::uint32_t>(dictionary, prefix + "card");
        const auto device = number<std::uint32_t>(dictionary, prefix + "device");
        const auto subdevice = number<std::uint32_t>(dictionary, prefix + "subdevice");
        if (card && device) return PcmAddress{*card, *device, subdevice.value_or(0)};
    }
    return std::nullopt;
}

std::optional<std::int32_t> process(const spa_dict* dictionary, std::string_view key) {
    const auto value = number<std::int32_t>(dictionary, key);
    return value && *value > 0 ? value : std::nullopt;
}

std::string firstText(const spa_dict* dictionary, std::initializer_list<std::string_view> keys) {
    for (const std::string_view key : keys) {
        std::string text = dictionaryText(dictionary, key);
        if (!text.empty()) return text;
    }
    return {};
}

}  // namespace

std::string dictionaryText(const spa_dict* dictionary, std::string_view key) {
    return wellFormed(rawText(dictionary, key));
}

std::uint64_t objectSerial(const spa_dict* dictionary) {
    return number<std::uint64_t>(dictionary, "object.serial").value_or(0);
}

bool isSoundClass(std::string_view mediaClass) {
    return mediaClass.empty() || contains(mediaClass, "Audio");
}

NodeProperties nodeProperties(const spa_dict* dictionary) {
    NodeProperties node;
    node.role = roleFromDictionary(dictionary);
    node.name = dictionaryText(dictionary, "node.name");
    node.nick = dictionaryText(dictionary, "node.nick");
    node.description = dictionaryText(dictionary, "node.description");
    node.factory = dictionaryText(dictionary, "factory.name");
    node.linkGroup = dictionaryText(dictionary, "node.link-group");
    node.application = firstText(dictionary, {"pipewire.access.portal.app_id", "application.id"});
    node.applicationName = dictionaryText(dictionary, "application.name");
    node.profile = dictionaryText(dictionary, "device.profile.name");
    node.deviceApi = dictionaryText(dictionary, "device.api");
    node.deviceBus = dictionaryText(dictionary, "device.bus");
    node.pcmNames =
        joined({rawText(dictionary, "api.alsa.path"), "\n", rawText(dictionary, "api.alsa.pcm.id"), "\n",
                rawText(dictionary, "api.alsa.pcm.name"), "\n", rawText(dictionary, "alsa.id"), "\n",
                rawText(dictionary, "alsa.name")});
    node.driverName = firstText(dictionary, {"alsa.driver_name", "api.alsa.card.driver"});
    node.hasRaopKeys = hasKeyWithPrefix(dictionary, "raop.");
    node.hasBluezKeys = hasKeyWithPrefix(dictionary, "api.bluez5.");
    node.sessionPriority = number<std::int32_t>(dictionary, "priority.session").value_or(0);
    node.processIdentifier = process(dictionary, "application.process.id");
    node.device = number<std::uint32_t>(dictionary, "device.id");
    node.client = number<std::uint32_t>(dictionary, "client.id");
    node.requestedRate = rateFromFraction(rawText(dictionary, "node.rate"));
    node.forcedRate = number<std::uint32_t>(dictionary, "node.force-rate");
    node.setRate = number<std::uint32_t>(dictionary, "audio.rate");
    node.linkCodec = dictionaryText(dictionary, "api.bluez5.codec");
    node.pcm = pcmAddress(dictionary);
    node.hasLibraryVolume = hasLibraryVolume(rawText(dictionary, "api.alsa.path"));
    node.isRouted = !rawText(dictionary, "card.profile.device").empty();
    node.isJack = isJackClient(dictionary);
    return node;
}

DeviceProperties deviceProperties(const spa_dict* dictionary) {
    DeviceProperties device;
    device.api = dictionaryText(dictionary, "device.api");
    device.bus = dictionaryText(dictionary, "device.bus");
    device.vendorName = dictionaryText(dictionary, "device.vendor.name");
    device.productName = dictionaryText(dictionary, "device.product.name");
    device.cardLongName = firstText(dictionary, {"api.alsa.card.longname", "alsa.long_card_name"});
    device.cardDriver = firstText(dictionary, {"alsa.driver_name", "api.alsa.card.driver"});
    return device;
}

ClientProperties clientProperties(const spa_dict* dictionary) {
    ClientProperties client;
    client.api = dictionaryText(dictionary, "client.api");
    client.application = dictionaryText(dictionary, "application.id");
    client.applicationName = dictionaryText(dictionary, "application.name");
    client.access = dictionaryText(dictionary, "pipewire.access");
    client.portalApplication = dictionaryText(dictionary, "pipewire.access.portal.app_id");
    client.host = dictionaryText(dictionary, "application.process.host");
    client.serverType = dictionaryText(dictionary, "pulse.server.type");
    client.claimedProcess = process(dictionary, "application.process.id");
    client.connectedProcess = process(dictionary, "pipewire.sec.pid");
    return client;
}

std::optional<LinkRecord> linkRecord(const spa_dict* dictionary) {
    const auto output = number<std::uint32_t>(dictionary, "link.output.node");
    const auto input = number<std::uint32_t>(dictionary, "link.input.node");
    if (!output || !input) return std::nullopt;
    return LinkRecord{*output, *input, number<std::uint32_t>(dictionary, "link.output.port").value_or(0),
                      number<std::uint32_t>(dictionary, "link.input.port").value_or(0)};
}

std::optional<PortRecord> portRecord(const spa_dict* dictionary) {
    const auto node = number<std::uint32_t>(dictionary, "node.id");
    if (!node) return std::nullopt;
    return PortRecord{*node, number<std::uint32_t>(dictionary, "port.id").value_or(0),
                      dictionaryText(dictionary, "audio.channel")};
}

}  // namespace purlock::host_linux
