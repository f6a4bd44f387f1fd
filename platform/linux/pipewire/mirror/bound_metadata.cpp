#include "platform/linux/pipewire/mirror/bound_metadata.h"

#include <string_view>
#include <utility>

#include "platform/linux/pipewire/rules/metadata_text.h"

namespace purlock::host_linux {

namespace {

/// An absent key means every key, an absent value that the key was removed.
bool concerns(const char* key, std::string_view wanted) {
    return key == nullptr || key == wanted;
}

}  // namespace

const pw_metadata_events BoundMetadata::events = {.version = PW_VERSION_METADATA_EVENTS,
                                                  .property = event<&BoundMetadata::property>};

BoundMetadata::BoundMetadata(const BindContext& context, std::uint32_t id, Kind kind,
                             std::function<void()> settingsChanged)
    : context_(context),
      kind_(kind),
      settingsChanged_(std::move(settingsChanged)),
      proxy_(bind(context.registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA)) {
    if (kind == Kind::defaults) defaultDue_ = context.sync.next();
    auto* const metadata = reinterpret_cast<pw_metadata*>(proxy_.get());
    if (metadata != nullptr) pw_metadata_add_listener(metadata, listener_.hook(), &events, this);
}

int BoundMetadata::property(std::uint32_t subject, const char* key, const char*, const char* value) {
    if (subject != PW_ID_CORE) return 0;
    if (kind_ == Kind::settings) {
        setSetting(key, value);
    } else if (concerns(key, "default.audio.sink")) {
        defaultDue_.reset();
        if (setDefaultName(nameFromMetadata(value != nullptr ? value : ""))) context_.sync.changed();
    }
    return 0;
}

void BoundMetadata::removed() {
    if (kind_ == Kind::settings) setSetting(nullptr, nullptr);
}

bool BoundMetadata::syncDone(std::uint64_t sync) {
    if (!defaultDue_ || sync < *defaultDue_) return false;
    defaultDue_.reset();
    return setDefaultName(std::nullopt);
}

bool BoundMetadata::setDefaultName(std::optional<std::string> name) {
    std::optional<std::string>& known = context_.graph.defaultSinkName;
    if (name == known) return false;
    known = std::move(name);
    return true;
}

void BoundMetadata::setSetting(const char* key, const char* value) {
    ServerSettings& settings = context_.graph.settings;
    const ServerSettings before = settings;
    const std::string_view text = value != nullptr ? value : "";
    if (concerns(key, "clock.rate")) {
        settings.clockRate = rateFromMetadata(text).value_or(ServerSettings{}.clockRate);
    }
    if (concerns(key, "clock.force-rate")) settings.forcedRate = rateFromMetadata(text).value_or(0);
    if (concerns(key, "clock.allowed-rates")) settings.allowedRates = ratesFromMetadata(text);
    if (settings != before) settingsChanged_();
}

}  // namespace purlock::host_linux
