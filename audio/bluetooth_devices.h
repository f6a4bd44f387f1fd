#pragma once

#include <optional>
#include <string_view>

#include "audio/bluetooth_stack.h"
#include "core/device_state.h"

namespace purlock {

/// Finds the Bluetooth device behind an output device. Stateless; any thread.
namespace BluetoothDevices {

/// The first connected device whose own name, else whose name-or-address text, stands in `name`, whatever the
/// letter case; an output device's name may add words around the device's own. When none does, the first that
/// is connected; absent when none is. An empty name counts as none, for it would stand in every text. No
/// signal strength is read.
std::optional<BluetoothDeviceInfo> infoMatchingName(std::string_view name, BluetoothStack& stack);

}  // namespace BluetoothDevices

}  // namespace purlock
