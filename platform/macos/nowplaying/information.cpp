#include "platform/macos/nowplaying/information.h"

#include <utility>
#include <vector>

#include "platform/macos/corefoundation/text.h"

namespace purlock::host_macos {

namespace {

NowPlayingValue valueOf(CFTypeRef value) {
    if (value == nullptr) return OtherNowPlayingType{};
    if (auto text = textOf(value)) return std::move(*text);
    if (CFGetTypeID(value) == CFBooleanGetTypeID()) {  // a number object too
        return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0 ? 1.0 : 0.0;
    }
    if (CFGetTypeID(value) != CFNumberGetTypeID()) return OtherNowPlayingType{};
    double number = 0;
    // The result tells whether the number fits; the nearest double is what is asked for.
    CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberDoubleType, &number);
    return number;
}

}  // namespace

NowPlayingDictionary dictionaryOf(CFDictionaryRef information) {
    NowPlayingDictionary dictionary;
    if (information == nullptr) return dictionary;
    const auto count = static_cast<std::size_t>(CFDictionaryGetCount(information));
    std::vector<const void*> keys(count);
    std::vector<const void*> values(count);
    CFDictionaryGetKeysAndValues(information, keys.data(), values.data());
    for (std::size_t i = 0; i < count; ++i) {
        if (auto key = textOf(keys[i])) dictionary.emplace(std::move(*key), valueOf(values[i]));
    }
    return dictionary;
}

}  // namespace purlock::host_macos
