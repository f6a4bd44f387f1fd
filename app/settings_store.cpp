#include "app/settings_store.h"

#include <utility>
#include <variant>

namespace purlock {

namespace {

std::optional<std::string> storedPin(const UserDefaults& defaults) {
    auto uid = defaults.stringForKey(SettingsStore::pinnedKey);
    if (uid && uid->empty()) return std::nullopt;
    return uid;
}

bool storedBool(const UserDefaults& defaults, const char* key, bool otherwise) {
    const auto object = defaults.objectForKey(key);
    if (!object) return otherwise;
    const bool* const value = std::get_if<bool>(&*object);
    return value != nullptr ? *value : otherwise;
}

}  // namespace

SettingsStore::SettingsStore(std::shared_ptr<UserDefaults> defaults)
    : defaults_(std::move(defaults)),
      pinnedDeviceUID_(storedPin(*defaults_)),
      logEnabled_(storedBool(*defaults_, logEnabledKey, true)),
      panelPinned_(storedBool(*defaults_, panelPinnedKey, false)) {}

void SettingsStore::setPinnedDeviceUID(std::optional<std::string> uid) {
    pinnedDeviceUID_.set(std::move(uid));
    // An observer may have assigned again; the newest value is the one to keep.
    const auto current = pinnedDeviceUID_.value();
    if (current && !current->empty()) {
        defaults_->setObject(*current, pinnedKey);
    } else {
        defaults_->removeObjectForKey(pinnedKey);
    }
    if (const auto callback = onPinnedDeviceChange_) callback(current);
}

void SettingsStore::setLogEnabled(bool enabled) {
    logEnabled_.set(enabled);
    defaults_->setBool(logEnabled_.value(), logEnabledKey);
}

void SettingsStore::setPanelPinned(bool pinned) {
    panelPinned_.set(pinned);
    const bool current = panelPinned_.value();
    defaults_->setBool(current, panelPinnedKey);
    if (const auto callback = onPanelPinnedChange_) callback(current);
}

}  // namespace purlock
