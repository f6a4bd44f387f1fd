#include "platform/linux/pipewire/mirror/bound_metadata.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "platform/linux/pipewire/mirror/bound_node.h"
#include "platform/linux/pipewire/rules/metadata_text.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t longestValue = std::size_t{16} * 1024;

/// An absent key means every key, an absent value that the key was removed.
bool concerns(const char* key, std::string_view wanted) {
    return key == nullptr || key == wanted;
}

std::string_view boundedValue(const char* value) {
    return value == nullptr ? std::string_view() : std::string_view(value, ::strnlen(value, longestValue));
}

}  // namespace

const pw_metadata_events BoundObjects::Metadata::events = {
    .version = PW_VERSION_METADATA_EVENTS,
    .property = [](void* data, std::uint32_t subject, const char* key, const char*,
                   const char* value) { return static_cast<Metadata*>(data)->told(subject, key, value); },
};

BoundObjects::Metadata::Metadata(BoundObjects& objects, std::uint32_t id, Kind kind)
    : objects_(objects),
      kind_(kind),
      wholeFrom_(objects.owner_.nextSync()),
      proxy_(static_cast<pw_proxy*>(pw_registry_bind(objects.owner_.registry(), id,
                                                     PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0))) {
    auto* const metadata = reinterpret_cast<pw_metadata*>(proxy_.get());
    if (metadata != nullptr) pw_metadata_add_listener(metadata, listener_.hook(), &events, this);
}

int BoundObjects::Metadata::told(std::uint32_t subject, const char* key, const char* value) {
    if (subject != PW_ID_CORE) return 0;
    if (kind_ == Kind::defaults) setDefault(key, value);
    if (kind_ == Kind::settings) setSetting(key, value);
    return 0;
}

void BoundObjects::Metadata::forget() {
    if (kind_ == Kind::settings) told(PW_ID_CORE, nullptr, nullptr);
}

void BoundObjects::Metadata::setDefault(const char* key, const char* value) {
    if (!concerns(key, "default.audio.sink")) return;
    hasToldDefault_ = true;
    setDefaultName(nameFromMetadata(boundedValue(value)));
}

void BoundObjects::Metadata::setDefaultName(std::optional<std::string> name) {
    std::optional<std::string>& known = objects_.owner_.mirror().defaultSinkName;
    if (name == known) return;
    known = std::move(name);
    objects_.owner_.changed();
}

void BoundObjects::Metadata::commit(std::uint64_t sync) {
    if (isWhole_ || sync < wholeFrom_) return;
    isWhole_ = true;
    if (kind_ == Kind::defaults && !hasToldDefault_) setDefaultName(std::nullopt);
}

void BoundObjects::Metadata::setSetting(const char* key, const char* value) {
    ServerSettings& settings = objects_.owner_.mirror().settings;
    const ServerSettings before = settings;
    const std::string_view text = boundedValue(value);
    if (concerns(key, "clock.rate")) {
        settings.clockRate = rateFromMetadata(text).value_or(ServerSettings{}.clockRate);
    }
    if (concerns(key, "clock.force-rate")) settings.forcedRate = rateFromMetadata(text).value_or(0);
    if (concerns(key, "clock.allowed-rates")) settings.allowedRates = ratesFromMetadata(text);
    if (settings == before) return;
    for (const auto& [id, node] : objects_.nodes_) node->choosePreferred();
    objects_.owner_.changed();
}

}  // namespace purlock::host_linux
