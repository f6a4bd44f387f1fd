#include "platform/linux/propertylist/property_list_file_reader.h"

#include "platform/linux/propertylist/property_list_check.h"
#include "platform/linux/propertylist/property_list_parser.h"
#include "platform/linux/system/files.h"

namespace purlock::host_linux {

std::optional<PropertyListDictionary> PropertyListFileReader::dictionaryWithContentsOfFile(
    const std::string& path) {
    if (path.find('\0') != std::string::npos) return std::nullopt;
    const FileText content = readWholeFile(path, PropertyListLimits{}.bytes);
    return content.status == FileStatus::read ? parsePropertyList(content.text) : std::nullopt;
}

}  // namespace purlock::host_linux
