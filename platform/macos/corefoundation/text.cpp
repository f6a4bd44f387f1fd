#include "platform/macos/corefoundation/text.h"

#include <algorithm>

namespace purlock::host_macos {

namespace {

constexpr UInt8 lossByte = '?';
constexpr std::size_t mostBytesOfAUnit = 3;  // in UTF-8; a pair of units makes four

}  // namespace

std::optional<std::string> textOf(CFTypeRef value) {
    if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) return std::nullopt;
    const auto string = static_cast<CFStringRef>(value);
    const CFRange range{0, std::min(CFStringGetLength(string), longestText)};
    std::string text(static_cast<std::size_t>(range.length) * mostBytesOfAUnit, '\0');
    CFIndex used = 0;
    CFStringGetBytes(string, range, kCFStringEncodingUTF8, lossByte, false,
                     reinterpret_cast<UInt8*>(text.data()), static_cast<CFIndex>(text.size()), &used);
    text.resize(static_cast<std::size_t>(used));
    return text;
}

Owned<CFStringRef> makeText(std::string_view text) {
    return Owned(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                         static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

}  // namespace purlock::host_macos
