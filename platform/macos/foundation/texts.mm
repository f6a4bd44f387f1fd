#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

std::optional<std::string> textOf(NSString* text) {
    const char* const bytes = text.UTF8String;
    if (bytes == nullptr) return std::nullopt;
    // Not up to the first zero: a text may hold one.
    return std::string(bytes, [text lengthOfBytesUsingEncoding:NSUTF8StringEncoding]);
}

NSString* makeNSString(std::string_view text) {
    NSString* const made = [[NSString alloc] initWithBytes:text.data()
                                                    length:text.size()
                                                  encoding:NSUTF8StringEncoding];
    return made != nil ? made : @"";
}

bool isBoolean(id object) {
    return object != nil && CFGetTypeID((__bridge CFTypeRef)object) == CFBooleanGetTypeID();
}

}  // namespace purlock::host_macos
