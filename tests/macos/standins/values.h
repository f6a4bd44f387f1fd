#pragma once

#include <Foundation/Foundation.h>

#include <string>
#include <vector>

#include "tests/macos/standins/world.h"

// How the stand-ins make and read each other's objects. For Objective-C++ files.

namespace purlock::standins {

std::string utf8(NSString* text);
NSString* string(const std::string& utf8);
NSString* stringOrNil(const std::optional<std::string>& utf8);
std::string bytesOf(NSData* data);
NSArray* array(const std::vector<id>& objects);
id objectOf(const StoredValue& value);
StoredValue storedValueOf(id object);

}  // namespace purlock::standins
