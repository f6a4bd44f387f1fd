#pragma once

#include <optional>
#include <string>
#include <vector>

namespace purlock {

/// The names that an attached USB device gives itself; absent where its descriptors hold none.
struct UsbDevice {
    std::optional<std::string> vendorName;
    std::optional<std::string> productName;

    bool operator==(const UsbDevice&) const = default;
};

/// The attached USB devices. Owned by the host; any thread; read afresh at each call.
class UsbRegistry {
  public:
    UsbRegistry() = default;
    virtual ~UsbRegistry() = default;
    UsbRegistry(const UsbRegistry&) = delete;
    UsbRegistry& operator=(const UsbRegistry&) = delete;

    /// In a stable order; absent when the registry cannot be asked.
    virtual std::optional<std::vector<UsbDevice>> devices() = 0;
};

}  // namespace purlock
