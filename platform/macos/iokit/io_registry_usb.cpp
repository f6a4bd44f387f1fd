#include "platform/macos/iokit/io_registry_usb.h"

#include <IOKit/IOKitLib.h>

#include "platform/macos/corefoundation/text.h"
#include "platform/macos/iokit/io_object.h"

namespace purlock::host_macos {

namespace {

/// No machine has as many; the walk ends here.
constexpr std::size_t mostDevices = 1024;

/// Absent when the device has no such property, or one that is no text.
std::optional<std::string> textProperty(const IOObject& service, CFStringRef key) {
    const Owned<CFTypeRef> value(IORegistryEntryCreateCFProperty(service.get(), key, kCFAllocatorDefault, 0));
    return textOf(value.get());
}

}  // namespace

std::optional<std::vector<UsbDevice>> IORegistryUsb::devices() {
    // The query takes over the reference to the dictionary, whatever comes of it.
    io_iterator_t found = 0;
    const kern_return_t result =
        IOServiceGetMatchingServices(kIOMainPortDefault, IOServiceMatching("IOUSBHostDevice"), &found);
    const IOObject iterator(found);
    if (result != KERN_SUCCESS) return std::nullopt;
    std::vector<UsbDevice> devices;
    while (iterator && devices.size() < mostDevices) {
        const IOObject service(IOIteratorNext(iterator.get()));
        if (!service) break;
        devices.push_back({textProperty(service, CFSTR("USB Vendor Name")),
                           textProperty(service, CFSTR("USB Product Name"))});
    }
    return devices;
}

}  // namespace purlock::host_macos
