#pragma once

#include "source/property_list_reader.h"

namespace purlock::host_linux {

/// Reads property-list files with libplist. Made by the host's start-up; any thread. A file above 4 MB, and
/// anything that is no regular file, is unreadable.
class PropertyListFileReader final : public PropertyListReader {
  public:
    std::optional<PropertyListDictionary> dictionaryWithContentsOfFile(const std::string& path) override;
};

}  // namespace purlock::host_linux
