#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/macos/corefoundation/owned.h"

namespace purlock::host_macos {

// Texts between CoreFoundation and the portable code. Any thread.

/// At most this many UTF-16 units of a text are read: what other processes hand out may be of any size.
inline constexpr CFIndex longestText = 1 << 16;

/// The text in UTF-8, cut to `longestText`; what is no character becomes "?". Absent when `value` is null or
/// no text.
std::optional<std::string> textOf(CFTypeRef value);

/// Empty when `text` is not UTF-8.
Owned<CFStringRef> makeText(std::string_view text);

}  // namespace purlock::host_macos
