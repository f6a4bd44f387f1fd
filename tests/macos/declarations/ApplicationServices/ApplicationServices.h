#pragma once

#include <CoreFoundation/CoreFoundation.h>

// Signatures and values: pyobjc and objc2 agree. The version of two functions is unchecked.

typedef const struct MACOS_BRIDGED(id) __AXUIElement* AXUIElementRef;

typedef CF_ENUM(SInt32, AXError) {
    kAXErrorSuccess = 0,
    kAXErrorCannotComplete = -25204,  // among others: the application did not answer in time
    kAXErrorNoValue = -25212,
};

MACOS_EXTERN CFStringRef kAXTrustedCheckOptionPrompt MACOS_SINCE(10.9);

MACOS_EXTERN Boolean AXIsProcessTrusted(void) MACOS_SINCE(10.4);
MACOS_EXTERN Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) MACOS_SINCE(10.9);
MACOS_EXTERN CFTypeID AXUIElementGetTypeID(void);
MACOS_EXTERN AXUIElementRef AXUIElementCreateApplication(pid_t pid) CF_RETURNS_RETAINED;
/// On success the caller releases `*value`.
MACOS_EXTERN AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                                   CFTypeRef CF_RETURNS_RETAINED* value);
/// For this element alone.
MACOS_EXTERN AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float timeoutInSeconds)
    MACOS_SINCE(10.4);
