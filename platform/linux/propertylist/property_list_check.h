#pragma once

#include <cstddef>
#include <string_view>

namespace purlock::host_linux {

// libplist trusts a property list further than a stranger's file deserves. Version 2.2 has these faults. A
// binary list of 100,000 nested arrays overflows the stack, and so does an XML list of 300,000. 24 binary
// arrays, each of which names the next one twice, take minutes and all memory, since a value is copied at
// each mention. A binary key with a zero character stops the process. The time for an XML text grows with the
// square of its entities, to minutes for 4 MB. The checks below keep such lists away from the library. Both
// are pure functions, in time linear in the limits; any thread.

struct PropertyListLimits {
    std::size_t values = 20'000;  // of any type, each counted as often as it is mentioned; XML: of tags
    std::size_t bytes = 4 * 1024 * 1024;        // of all values, counted likewise
    int depth = 64;                             // of containers in one another, in a binary list
    std::size_t entityWork = 64 * 1024 * 1024;  // XML: bytes to be moved while entities are replaced
};

/// True if the binary list is well formed as far as its top object leads, without a cycle and within the
/// limits. The layout is the one that CoreFoundation's CFBinaryPList.c describes.
bool isSafeBinaryPropertyList(std::string_view data, const PropertyListLimits& limits = {});

/// True if a reader of XML lists can read the text within the limits. The text may be anything.
bool isSafeXmlPropertyList(std::string_view data, const PropertyListLimits& limits = {});

}  // namespace purlock::host_linux
