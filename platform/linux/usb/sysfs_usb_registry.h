#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "audio/usb_registry.h"

namespace purlock::host_linux {

/// The attached USB devices, as the kernel lists them below /sys/bus/usb/devices.
///
/// Listed are devices, not their interfaces, and no hubs (device class 09): every machine has root hubs, and
/// when no name matches, the first named device is taken for the audio device. Devices with an interface of
/// the audio class (01) come first, as several devices may bear a maker's name; else the order is that of bus
/// and port numbers, so it stays the same until something is plugged elsewhere. Names come from the
/// attributes `manufacturer` and `product` (Documentation/ABI/stable/sysfs-bus-usb), which are missing when
/// the device has no such descriptor. Any thread.
class SysfsUsbRegistry final : public UsbRegistry {
  public:
    explicit SysfsUsbRegistry(std::string folder = "/sys/bus/usb/devices") : folder_(std::move(folder)) {}

    std::optional<std::vector<UsbDevice>> devices() override;

  private:
    const std::string folder_;
};

}  // namespace purlock::host_linux
