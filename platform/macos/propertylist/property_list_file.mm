#include "platform/macos/propertylist/property_list_file.h"

#include <Foundation/Foundation.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

namespace {

/// Of a file of reasonable size, and no pipe that would never end.
bool isWorthReading(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return false;
    const auto size = std::filesystem::file_size(path, error);
    return !error && size <= PropertyListFile::largestFile;
}

PropertyListValue valueOf(id value) {
    if ([value isKindOfClass:[NSString class]]) {
        if (auto text = textOf(value)) return std::move(*text);
        return OtherPropertyListType{};
    }
    if (![value isKindOfClass:[NSNumber class]]) return OtherPropertyListType{};
    NSNumber* const number = value;
    if (isBoolean(number)) return static_cast<bool>(number.boolValue);  // a number too, so before the others
    if (CFNumberIsFloatType((__bridge CFNumberRef)number) != 0) return OtherPropertyListType{};
    return static_cast<std::int64_t>(number.longLongValue);
}

}  // namespace

std::optional<PropertyListDictionary> PropertyListFile::dictionaryWithContentsOfFile(
    const std::string& path) {
    @autoreleasepool {
        if (!isWorthReading(path)) return std::nullopt;
        NSDictionary* const contents = [[NSDictionary alloc] initWithContentsOfFile:makeNSString(path)];
        if (contents == nil) return std::nullopt;
        PropertyListDictionary dictionary;
        for (id key in contents) {
            if (![key isKindOfClass:[NSString class]]) continue;
            if (auto name = textOf(key)) {
                dictionary.emplace(std::move(*name), valueOf([contents objectForKey:key]));
            }
        }
        return dictionary;
    }
}

bool FoundationFileSystem::fileExistsAtPath(const std::string& path) {
    @autoreleasepool {
        return [NSFileManager.defaultManager fileExistsAtPath:makeNSString(path)];
    }
}

std::optional<std::string> FoundationFileSystem::homeDirectory() {
    @autoreleasepool {
        auto home = textOf(@"~".stringByExpandingTildeInPath);
        return home == "~" ? std::nullopt : home;  // unchanged where there is none
    }
}

}  // namespace purlock::host_macos
