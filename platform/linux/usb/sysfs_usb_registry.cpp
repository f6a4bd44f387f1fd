#include "platform/linux/usb/sysfs_usb_registry.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/text.h"
#include "platform/linux/system/files.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t maximumEntries = 4096;
constexpr std::size_t maximumAttributeBytes = 1024;  // a descriptor's 126 UTF-16 units are at most 378 bytes

/// "1-4.2" is a device, by bus and ports; "usb1" a root hub, "1-4.2:1.0" an interface.
bool isDeviceName(std::string_view name) {
    return !name.empty() && name.front() >= '0' && name.front() <= '9' &&
           name.find(':') == std::string_view::npos;
}

/// The numbers in a device's name: its bus, then a port for each hub on the way to it.
std::vector<unsigned> numbersIn(std::string_view name) {
    std::vector<unsigned> numbers;
    const char* position = name.data();
    const char* const end = position + name.size();
    while (position < end) {
        unsigned number = 0;
        const auto [next, error] = std::from_chars(position, end, number);
        if (error == std::errc()) numbers.push_back(number);
        position = std::max(next, position + 1);
    }
    return numbers;
}

std::optional<std::string> readAttribute(const std::string& device, const char* name) {
    const auto text = readFile(device + "/" + name, maximumAttributeBytes);
    if (!text) return std::nullopt;
    std::string_view line = *text;
    line = line.substr(0, line.find('\n'));
    if (line.empty()) return std::nullopt;
    return wellFormed(line);
}

bool isHub(const std::string& device) {
    return readAttribute(device, "bDeviceClass") == "09";
}

/// The entries that are interfaces of class 01, audio ("1-4.2:1.0").
std::vector<std::string> soundInterfaces(const std::vector<std::string>& entries, const std::string& folder) {
    std::vector<std::string> found;
    for (const std::string& entry : entries) {
        const bool isInterface = entry.find(':') != std::string::npos;
        if (isInterface && readAttribute(joined({folder, "/", entry}), "bInterfaceClass") == "01") {
            found.push_back(entry);
        }
    }
    return found;
}

}  // namespace

std::optional<std::vector<UsbDevice>> SysfsUsbRegistry::devices() {
    const auto entries = namesInFolder(folder_, maximumEntries);
    if (!entries) return std::nullopt;
    std::vector<std::string> names = *entries;
    std::erase_if(names, [](const std::string& name) { return !isDeviceName(name); });
    std::ranges::stable_sort(names, {}, numbersIn);
    const auto interfaces = soundInterfaces(*entries, folder_);
    // A device that has sound to offer is the likelier one to be meant by a name that others bear too.
    std::stable_partition(names.begin(), names.end(), [&](const std::string& name) {
        return std::ranges::any_of(interfaces, [&](const std::string& each) {
            return each.starts_with(name) && each.size() > name.size() && each[name.size()] == ':';
        });
    });
    std::vector<UsbDevice> devices;
    for (const std::string& name : names) {
        const std::string device = joined({folder_, "/", name});
        if (!isHub(device)) {
            devices.push_back({readAttribute(device, "manufacturer"), readAttribute(device, "product")});
        }
    }
    return devices;
}

}  // namespace purlock::host_linux
