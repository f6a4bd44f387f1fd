#pragma once

#include <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

namespace purlock::host_macos {

// Texts between Foundation and the portable code. For Objective-C++ files; any thread.

/// Absent when `text` is nil or cannot be had in UTF-8.
std::optional<std::string> textOf(NSString* text);

/// The empty text when `text` is not UTF-8.
NSString* makeNSString(std::string_view text);

/// True if `object` is one of the two Booleans; other numbers are not, whatever their value.
bool isBoolean(id object);

}  // namespace purlock::host_macos
