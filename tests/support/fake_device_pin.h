#pragma once

#include <optional>
#include <string>
#include <utility>

#include "audio/device_pin.h"

namespace purlock::test {

/// A pin that a test sets.
class FakeDevicePin final : public DevicePin {
  public:
    const Published<std::optional<std::string>>& pinnedDeviceUID() const override { return uid_; }
    void setOnPinnedDeviceChange(OnChange callback) override { onChange_ = std::move(callback); }

    void setPinnedDeviceUID(const std::optional<std::string>& uid) {
        uid_.set(uid);
        if (onChange_) onChange_(uid);
    }

  private:
    Published<std::optional<std::string>> uid_{std::nullopt};
    OnChange onChange_;
};

}  // namespace purlock::test
