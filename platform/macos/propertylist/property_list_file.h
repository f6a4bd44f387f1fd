#pragma once

#include <cstdint>

#include "source/file_system.h"
#include "source/property_list_reader.h"

namespace purlock::host_macos {

/// Property lists as Foundation reads them. Any thread.
class PropertyListFile final : public PropertyListReader {
  public:
    static constexpr std::uintmax_t largestFile = 8U << 20U;  // bytes

    std::optional<PropertyListDictionary> dictionaryWithContentsOfFile(const std::string& path) override;
};

/// Any thread.
class FoundationFileSystem final : public FileSystem {
  public:
    bool fileExistsAtPath(const std::string& path) override;
    std::optional<std::string> homeDirectory() override;
};

}  // namespace purlock::host_macos
