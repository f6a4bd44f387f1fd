#include "platform/macos/storage/standard_user_defaults.h"

#include <Foundation/Foundation.h>

#include <utility>

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

namespace {

NSUserDefaults* defaults() {
    return NSUserDefaults.standardUserDefaults;
}

}  // namespace

std::optional<std::string> StandardUserDefaults::stringForKey(std::string_view key) const {
    @autoreleasepool {
        NSString* const name = makeNSString(key);
        // Asked for a text, the system makes one of a number; only a stored text counts.
        if (![[defaults() objectForKey:name] isKindOfClass:[NSString class]]) return std::nullopt;
        return textOf([defaults() stringForKey:name]);
    }
}

std::optional<DefaultsValue> StandardUserDefaults::objectForKey(std::string_view key) const {
    @autoreleasepool {
        const id object = [defaults() objectForKey:makeNSString(key)];
        if (object == nil) return std::nullopt;
        if (isBoolean(object)) return DefaultsValue(static_cast<bool>([object boolValue]));
        if (![object isKindOfClass:[NSString class]]) return DefaultsValue(OtherDefaultsValue{});
        return DefaultsValue(textOf(object).value_or(std::string()));
    }
}

void StandardUserDefaults::setObject(std::string_view text, std::string_view key) {
    @autoreleasepool {
        [defaults() setObject:makeNSString(text) forKey:makeNSString(key)];
    }
}

void StandardUserDefaults::setBool(bool value, std::string_view key) {
    @autoreleasepool {
        [defaults() setBool:value forKey:makeNSString(key)];
    }
}

void StandardUserDefaults::removeObjectForKey(std::string_view key) {
    @autoreleasepool {
        [defaults() removeObjectForKey:makeNSString(key)];
    }
}

}  // namespace purlock::host_macos
