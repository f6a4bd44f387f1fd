#include "tests/macos/simulated/io_registry.h"

#include <IOKit/IOKitLib.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

#include "tests/macos/simulated/core_foundation.h"

namespace purlock::simulated {

namespace {

IORegistry* current = nullptr;

/// An object that is held: an iterator, with the device that comes next, or the service of a device.
struct Held {
    bool isIterator = false;
    std::size_t index = 0;
};
std::map<io_object_t, Held> live;
io_object_t lastObject = 700;

Held& checked(io_object_t object, bool isIterator) {
    const auto found = live.find(object);
    if (found == live.end() || found->second.isIterator != isIterator) {
        std::fprintf(stderr, "IOKit: object %u is gone, or never was one\n", object);
        std::abort();
    }
    return found->second;
}

io_object_t make(Held held) {
    live[++lastObject] = held;
    return lastObject;
}

CFTypeRef made(const UsbProperty& property) {
    if (const auto* const text = std::get_if<std::string>(&property)) return makeString(*text);
    return std::holds_alternative<NoText>(property) ? makeNumber(7) : nullptr;
}

}  // namespace

IORegistry::IORegistry(std::vector<UsbEntry> devices) : devices_(std::move(devices)) {
    current = this;
}

IORegistry::~IORegistry() {
    current = nullptr;
}

std::size_t IORegistry::liveObjects() {
    return live.size();
}

}  // namespace purlock::simulated

using namespace purlock::simulated;

extern "C" {

const mach_port_t kIOMainPortDefault = 0;

CFMutableDictionaryRef IOServiceMatching(const char* name) {
    const CFDictionaryRef made = makeDictionary({{"IOProviderClass", makeString(name)}});
    return const_cast<CFMutableDictionaryRef>(made);
}

kern_return_t IOServiceGetMatchingServices(mach_port_t mainPort, CFDictionaryRef matching,
                                           io_iterator_t* existing) {
    const void* key = nullptr;
    const void* name = nullptr;
    CFDictionaryGetKeysAndValues(matching, &key, &name);
    const bool asksForUsb = utf8Of(static_cast<CFStringRef>(name)) == "IOUSBHostDevice";
    CFRelease(matching);  // the query's own reference, also when it fails
    if (mainPort != kIOMainPortDefault || current->isRefused()) return 5;
    *existing = asksForUsb && !current->devices().empty() ? make({true, 0}) : 0;
    return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
    Held& held = checked(iterator, true);
    if (held.index == current->devices().size()) return 0;
    return make({false, held.index++});
}

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key, CFAllocatorRef,
                                          IOOptionBits) {
    const UsbEntry& device = current->devices()[checked(entry, false).index];
    const std::string name = utf8Of(key);
    if (name == "USB Vendor Name") return made(device.vendor);
    return name == "USB Product Name" ? made(device.product) : nullptr;
}

kern_return_t IOObjectRelease(io_object_t object) {
    if (live.erase(object) == 1) return KERN_SUCCESS;
    std::fprintf(stderr, "IOKit: object %u is released once too often\n", object);
    std::abort();
}
}
