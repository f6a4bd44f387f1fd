#pragma once

#include "audio/bluetooth_stack.h"

namespace purlock::host_macos {

/// The paired devices of IOBluetooth, asked anew at each call. Called on the monitor's queue: an answer may
/// take seconds. The framework does not say which threads it allows.
class PairedDevices final : public BluetoothStack {
  public:
    std::optional<std::vector<PairedBluetoothDevice>> pairedDevices() override;
};

}  // namespace purlock::host_macos
