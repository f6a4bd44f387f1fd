#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "audio/bluetooth_stack.h"
#include "platform/linux/dbus/bus_address.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::host_linux {

/// The paired Bluetooth devices, mirrored from BlueZ on the system bus.
///
/// Questions are answered from the mirror, so nobody waits for the daemon. Without a bus or a daemon, and
/// until a daemon that came has first answered, there is no stack to ask; both are noticed when they come,
/// die and return. Owned by the host, which ends it before the bus thread.
class BlueZStack final : public BluetoothStack {
  public:
    explicit BlueZStack(BusThread& thread, std::string busAddress = systemBusAddress());
    ~BlueZStack() override;

    std::optional<std::vector<PairedBluetoothDevice>> pairedDevices() override;

  private:
    class Watcher;
    struct Shared {
        std::mutex mutex;
        std::optional<std::vector<PairedBluetoothDevice>> devices;  // guarded by mutex
    };

    const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
    const std::unique_ptr<OnBusThread<Watcher>> watcher_;
};

}  // namespace purlock::host_linux
