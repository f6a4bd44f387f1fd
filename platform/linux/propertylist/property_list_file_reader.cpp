#include "platform/linux/propertylist/property_list_file_reader.h"

#include "platform/linux/propertylist/property_list_check.h"
#include "platform/linux/propertylist/property_list_parser.h"
#include "platform/linux/propertylist/regular_file.h"

namespace purlock::host_linux {

std::optional<PropertyListDictionary> PropertyListFileReader::dictionaryWithContentsOfFile(
    const std::string& path) {
    const auto content = readRegularFile(path, PropertyListLimits{}.bytes);
    return content ? parsePropertyList(*content) : std::nullopt;
}

}  // namespace purlock::host_linux
