// Mistakes that the analyser must find, each on the line that says so. It finds none in the program only if
// it finds these: check-ownership asks for every one. Never linked.

#include <ApplicationServices/ApplicationServices.h>
#include <CoreAudio/CoreAudio.h>
#include <IOKit/IOKitLib.h>

CFIndex leakedCreation() {
    const CFStringRef text = CFStringCreateWithBytes(nullptr, nullptr, 0, kCFStringEncodingUTF8, false);
    return CFStringGetLength(text);  // expected: leak
}

void consumedDictionary(io_iterator_t* found) {
    const CFMutableDictionaryRef matching = IOServiceMatching("IOUSBHostDevice");
    IOServiceGetMatchingServices(kIOMainPortDefault, matching, found);
    CFRelease(matching);  // expected: not owned
}

void releasedBorrowedReference(CFArrayRef array) {
    CFRelease(CFArrayGetValueAtIndex(array, 0));  // expected: not owned
}

CFTypeID useAfterRelease(io_registry_entry_t service) {
    const CFTypeRef value = IORegistryEntryCreateCFProperty(service, CFSTR("key"), nullptr, 0);
    CFRelease(value);
    return CFGetTypeID(value);  // expected: used after it is released
}
