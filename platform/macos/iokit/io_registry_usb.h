#pragma once

#include "audio/usb_registry.h"

namespace purlock::host_macos {

/// The USB devices of the I/O registry, in its order, walked anew at each call. Any thread.
class IORegistryUsb final : public UsbRegistry {
  public:
    std::optional<std::vector<UsbDevice>> devices() override;
};

}  // namespace purlock::host_macos
