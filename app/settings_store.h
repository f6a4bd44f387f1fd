#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/user_defaults.h"
#include "audio/device_pin.h"
#include "base/published.h"
#include "base/shared_instance.h"

namespace purlock {

/// The user's three persistent choices. Read from the user defaults when it is made, written back on every
/// change.
///
/// One instance for the program (`shared`); main thread only. Each assignment, even of the same value, first
/// tells the observers, then stores the value, then calls the callback, all before it returns.
class SettingsStore final : public DevicePin {
  public:
    static inline SharedInstance<SettingsStore> shared;

    explicit SettingsStore(std::shared_ptr<UserDefaults> defaults);

    /// Unique identifier of the pinned output device; absent when the system's default device is followed.
    const Published<std::optional<std::string>>& pinnedDeviceUID() const override { return pinnedDeviceUID_; }
    void setPinnedDeviceUID(std::optional<std::string> uid);

    /// True if the state log is written.
    const Published<bool>& logEnabled() const { return logEnabled_; }
    void setLogEnabled(bool enabled);

    /// True if the panel stays open when the user clicks elsewhere.
    const Published<bool>& panelPinned() const { return panelPinned_; }
    void setPanelPinned(bool pinned);

    /// Called after each assignment with the current value. Each has a single owner (the audio monitor, the
    /// shell); setting one replaces the last.
    void setOnPinnedDeviceChange(OnChange callback) override { onPinnedDeviceChange_ = std::move(callback); }
    void setOnPanelPinnedChange(std::function<void(bool)> callback) {
        onPanelPinnedChange_ = std::move(callback);
    }

    static constexpr const char* pinnedKey = "pinnedDeviceUID";
    static constexpr const char* logEnabledKey = "logEnabled";
    static constexpr const char* panelPinnedKey = "panelPinned";

  private:
    const std::shared_ptr<UserDefaults> defaults_;
    Published<std::optional<std::string>> pinnedDeviceUID_;
    Published<bool> logEnabled_;
    Published<bool> panelPinned_;
    OnChange onPinnedDeviceChange_;
    std::function<void(bool)> onPanelPinnedChange_;
};

}  // namespace purlock
