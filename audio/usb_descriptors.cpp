#include "audio/usb_descriptors.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/text.h"

namespace purlock::USBDescriptors {

namespace {

bool isNamedIn(const std::optional<std::string>& name, std::string_view lowercasedUID) {
    return hasText(name) && contains(lowercasedUID, lowercased(*name));
}

std::vector<UsbDevice> namedDevices(UsbRegistry& registry) {
    auto devices = registry.devices().value_or(std::vector<UsbDevice>{});
    std::erase_if(devices,
                  [](const UsbDevice& d) { return !hasText(d.vendorName) && !hasText(d.productName); });
    return devices;
}

std::optional<std::string> presentText(std::optional<std::string> text) {
    return hasText(text) ? std::move(text) : std::nullopt;
}

}  // namespace

std::optional<USBDeviceInfo> infoForCoreAudioUID(std::string_view uid, UsbRegistry& registry) {
    const std::vector<UsbDevice> candidates = namedDevices(registry);
    if (candidates.empty()) return std::nullopt;
    const std::string wanted = lowercased(uid);
    const auto match = std::ranges::find_if(candidates, [&](const UsbDevice& candidate) {
        return isNamedIn(candidate.productName, wanted) || isNamedIn(candidate.vendorName, wanted);
    });
    const UsbDevice& taken = match != candidates.end() ? *match : candidates.front();
    return USBDeviceInfo{presentText(taken.vendorName), presentText(taken.productName), "USB Audio", {}};
}

}  // namespace purlock::USBDescriptors
