#pragma once

#include <map>
#include <string>

#include "tests/macos/runtime/class_records.h"

namespace purlock::runtime {

// A small Objective-C runtime for tests on x86-64 Linux: objects with reference counts, weak references,
// autorelease pools and the calls that ARC makes. It knows no categories, no forwarding, no associated
// objects and no +load.

/// How many objects of each class are alive; none is left out but constant strings and classes.
std::map<std::string, long> liveObjects();
long liveObjects(const std::string& className);

/// How many objects wait in this thread's pools.
std::size_t autoreleased();

/// Stops the process when the object has been freed, or is none of this runtime's.
void stopIfGone(Object object, Selector selector);

}  // namespace purlock::runtime
