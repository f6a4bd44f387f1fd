#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/published.h"

namespace purlock {

/// The user's choice of an output device, as the audio monitor sees it. The settings store is one. Main
/// thread only.
class DevicePin {
  public:
    using OnChange = std::function<void(const std::optional<std::string>&)>;

    DevicePin() = default;
    virtual ~DevicePin() = default;
    DevicePin(const DevicePin&) = delete;
    DevicePin& operator=(const DevicePin&) = delete;

    /// Unique identifier of the pinned output device; absent or empty when the system's default device is
    /// followed.
    virtual const Published<std::optional<std::string>>& pinnedDeviceUID() const = 0;

    /// Called after each assignment with the current value. There is one owner; setting it replaces the last.
    virtual void setOnPinnedDeviceChange(OnChange callback) = 0;
};

}  // namespace purlock
