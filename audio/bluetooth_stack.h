#pragma once

#include <optional>
#include <string>
#include <vector>

namespace purlock {

/// A paired Bluetooth device, as the stack knows it.
struct PairedBluetoothDevice {
    bool isConnected = false;
    std::optional<std::string> name;
    std::optional<std::string> nameOrAddress;
    std::optional<std::string> addressString;

    bool operator==(const PairedBluetoothDevice&) const = default;
};

/// The paired Bluetooth devices. Owned by the host; any thread; never waits for the stack.
class BluetoothStack {
  public:
    BluetoothStack() = default;
    virtual ~BluetoothStack() = default;
    BluetoothStack(const BluetoothStack&) = delete;
    BluetoothStack& operator=(const BluetoothStack&) = delete;

    /// In a stable order; absent when there is no stack to ask.
    virtual std::optional<std::vector<PairedBluetoothDevice>> pairedDevices() = 0;
};

}  // namespace purlock
