#pragma once

#include <optional>
#include <string_view>

#include "audio/usb_registry.h"
#include "core/device_state.h"

namespace purlock {

/// Finds the USB device behind an output device. Stateless; any thread; the registry is read anew at each
/// call.
namespace USBDescriptors {

/// The first attached device whose product name, else whose vendor name, stands in `uid`, whatever the letter
/// case. When none does, the first that has a name at all: some identity is preferred to none. Absent when no
/// device has one. No descriptor is parsed for rates: `advertisedRates` is always empty, and the class is
/// always "USB Audio".
std::optional<USBDeviceInfo> infoForCoreAudioUID(std::string_view uid, UsbRegistry& registry);

}  // namespace USBDescriptors

}  // namespace purlock
