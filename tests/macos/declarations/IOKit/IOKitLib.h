#pragma once

#include <CoreFoundation/CoreFoundation.h>

// All of it: Apple's sources.

typedef unsigned int mach_port_t;
typedef int kern_return_t;
typedef mach_port_t io_object_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef UInt32 IOOptionBits;

enum { KERN_SUCCESS = 0 };

MACOS_EXTERN const mach_port_t kIOMainPortDefault MACOS_SINCE(12.0);

MACOS_EXTERN CFMutableDictionaryRef IOServiceMatching(const char* name) CF_RETURNS_RETAINED;
/// Always takes over one reference of `matching`. The iterator may be 0 on success: nothing matches.
MACOS_EXTERN kern_return_t IOServiceGetMatchingServices(mach_port_t mainPort,
                                                        CFDictionaryRef matching CF_CONSUMED,
                                                        io_iterator_t* existing);
/// 0 at the end; every other object must be released, and so must the iterator.
MACOS_EXTERN io_object_t IOIteratorNext(io_iterator_t iterator);
MACOS_EXTERN CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                                       CFAllocatorRef allocator,
                                                       IOOptionBits options) CF_RETURNS_RETAINED;
MACOS_EXTERN kern_return_t IOObjectRelease(io_object_t object);
