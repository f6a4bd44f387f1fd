#pragma once

#include <optional>
#include <string>

#include "source/property_list_reader.h"

namespace purlock::host_linux {

/// The dictionary at the root of a property list, binary or XML; absent when the list is malformed, has
/// another root or is larger or deeper than any preference file (`PropertyListLimits`). Parsed by libplist;
/// any thread.
///
/// An unsigned integer beyond the signed range comes as one below zero: libplist 2.2 does not tell the two
/// apart. The parameter is a string, not a view, because libplist may look at the zero byte behind it.
std::optional<PropertyListDictionary> parsePropertyList(const std::string& data);

}  // namespace purlock::host_linux
