#pragma once

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "audio/bluetooth_stack.h"
#include "audio/usb_registry.h"

namespace purlock::test {

/// A list that a test fills and its subject asks for; absent until it is set. Counts the questions. Any
/// thread.
template <typename Device>
class FakeDeviceList {
  public:
    void set(std::optional<std::vector<Device>> devices) {
        const std::lock_guard lock(mutex_);
        devices_ = std::move(devices);
    }

    std::optional<std::vector<Device>> ask() {
        const std::lock_guard lock(mutex_);
        ++asked_;
        return devices_;
    }

    int asked() const {
        const std::lock_guard lock(mutex_);
        return asked_;
    }

  private:
    mutable std::mutex mutex_;
    std::optional<std::vector<Device>> devices_;
    int asked_ = 0;
};

class FakeUsbRegistry final : public UsbRegistry {
  public:
    std::optional<std::vector<UsbDevice>> devices() override { return list.ask(); }

    FakeDeviceList<UsbDevice> list;
};

class FakeBluetoothStack final : public BluetoothStack {
  public:
    std::optional<std::vector<PairedBluetoothDevice>> pairedDevices() override { return list.ask(); }

    FakeDeviceList<PairedBluetoothDevice> list;
};

}  // namespace purlock::test
