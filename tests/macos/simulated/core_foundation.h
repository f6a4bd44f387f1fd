#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace purlock::simulated {

// CoreFoundation in memory, with reference counts that a test can see. A use of an object that has been
// released, or of a pointer that never was one, stops the process. Any thread.

/// The objects that somebody still holds; constant strings and Booleans do not count.
std::size_t liveObjects();

// Each of these returns a reference that the caller owns.

CFStringRef makeString(std::string_view utf8);
/// Any units at all, also half a pair.
CFStringRef makeString(std::u16string units);
CFNumberRef makeNumber(double value);
/// An object of a type that the program does not know: data, a date.
CFTypeRef makeOther();
/// Takes over the references to its elements; a null one stays.
CFArrayRef makeArray(const std::vector<CFTypeRef>& elements);
/// Takes over the references to its values.
CFDictionaryRef makeDictionary(const std::map<std::string, CFTypeRef>& entries);
/// An object of this type that a simulated framework tells by `payload`.
CFTypeRef makeObject(CFTypeID type, const void* payload);
const void* payloadOf(CFTypeRef object);

/// The text of a string, which must be well-formed.
std::string utf8Of(CFStringRef string);

inline constexpr CFTypeID elementType = 101;
inline constexpr CFTypeID bundleType = 102;
inline constexpr CFTypeID urlType = 103;

/// Says what type an object has that is none of these: on macOS, objects of Foundation are objects of
/// CoreFoundation.
extern CFTypeID (*typeOfForeignObject)(CFTypeRef object);

}  // namespace purlock::simulated
