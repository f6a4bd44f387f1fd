#pragma once

#include "../MacTypes.h"
#include "../Marks.h"

// Types and signatures: pyobjc. Ownership: the documented rule that a function with Create or Copy in its
// name gives a reference to release, and one with Get does not.

#pragma clang arc_cf_code_audited begin

typedef unsigned long CFTypeID;
typedef long CFIndex;
typedef unsigned long CFHashCode;

typedef const MACOS_BRIDGED(id) void* CFTypeRef;
typedef const struct MACOS_BRIDGED(NSString) __CFString* CFStringRef;
typedef const struct MACOS_BRIDGED(NSArray) __CFArray* CFArrayRef;
typedef const struct MACOS_BRIDGED(NSDictionary) __CFDictionary* CFDictionaryRef;
typedef struct MACOS_BRIDGED_MUTABLE(NSMutableDictionary) __CFDictionary* CFMutableDictionaryRef;
typedef const struct MACOS_BRIDGED(NSURL) __CFURL* CFURLRef;
typedef const struct MACOS_BRIDGED(NSNumber) __CFNumber* CFNumberRef;
typedef const struct MACOS_BRIDGED(NSNumber) __CFBoolean* CFBooleanRef;
typedef struct MACOS_BRIDGED(id) __CFBundle* CFBundleRef;
typedef const struct MACOS_BRIDGED(id) __CFAllocator* CFAllocatorRef;

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

MACOS_EXTERN const CFAllocatorRef kCFAllocatorDefault;

// References. CFRelease of a null reference crashes (unchecked).
MACOS_EXTERN CFTypeRef CFRetain(CFTypeRef cf);
MACOS_EXTERN void CFRelease(CFTypeRef cf);

MACOS_EXTERN CFTypeID CFGetTypeID(CFTypeRef cf);
MACOS_EXTERN CFTypeID CFStringGetTypeID(void);
MACOS_EXTERN CFTypeID CFArrayGetTypeID(void);
MACOS_EXTERN CFTypeID CFNumberGetTypeID(void);
MACOS_EXTERN CFTypeID CFBooleanGetTypeID(void);

// Texts. Lengths are in UTF-16 units, buffers in bytes.
typedef UInt32 CFStringEncoding;
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

MACOS_EXTERN CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                                 CFStringEncoding encoding, Boolean isExternalRepresentation);
MACOS_EXTERN CFIndex CFStringGetLength(CFStringRef theString);
MACOS_EXTERN CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding,
                                      UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                                      CFIndex maxBufLen, CFIndex* usedBufLen);
#if defined(__APPLE__)
#define CFSTR(text) ((CFStringRef)__builtin___CFStringMakeConstantString("" text ""))
#else
MACOS_EXTERN CFStringRef __CFStringMakeConstantString(const char* text);
#define CFSTR(text) __CFStringMakeConstantString("" text "")
#endif

// Collections. What they give is not retained for the caller.
MACOS_EXTERN CFIndex CFArrayGetCount(CFArrayRef theArray);
MACOS_EXTERN const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);

typedef struct {
    CFIndex version;
    const void* (*retain)(CFAllocatorRef allocator, const void* value);
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* value1, const void* value2);
    CFHashCode (*hash)(const void* value);
} CFDictionaryKeyCallBacks;
typedef struct {
    CFIndex version;
    const void* (*retain)(CFAllocatorRef allocator, const void* value);
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* value1, const void* value2);
} CFDictionaryValueCallBacks;
MACOS_EXTERN const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
MACOS_EXTERN const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

MACOS_EXTERN CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys,
                                                const void** values, CFIndex numValues,
                                                const CFDictionaryKeyCallBacks* keyCallBacks,
                                                const CFDictionaryValueCallBacks* valueCallBacks);
MACOS_EXTERN CFIndex CFDictionaryGetCount(CFDictionaryRef theDict);
// Both buffers have room for as many as the count says (Apple's documentation).
MACOS_EXTERN void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys,
                                               const void** values);

// Numbers. A Boolean is a type of its own; an NSNumber that holds one is bridged to it.
typedef CF_ENUM(CFIndex, CFNumberType) { kCFNumberDoubleType = 13 };
MACOS_EXTERN const CFBooleanRef kCFBooleanTrue;
MACOS_EXTERN Boolean CFBooleanGetValue(CFBooleanRef boolean);
MACOS_EXTERN Boolean CFNumberIsFloatType(CFNumberRef number);
MACOS_EXTERN Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr);

// Bundles. The function pointer is good while the bundle is loaded; releasing the bundle may unload it
// (unchecked).
typedef CF_ENUM(CFIndex, CFURLPathStyle) { kCFURLPOSIXPathStyle = 0 };
MACOS_EXTERN CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath,
                                                    CFURLPathStyle pathStyle, Boolean isDirectory);
MACOS_EXTERN CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);
MACOS_EXTERN void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName);

#pragma clang arc_cf_code_audited end
