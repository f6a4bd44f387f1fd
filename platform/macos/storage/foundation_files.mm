#include "platform/macos/storage/foundation_files.h"

#include <Foundation/Foundation.h>

#include <system_error>

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

namespace fs = std::filesystem;

namespace {

NSString* pathOf(const fs::path& path) {
    return makeNSString(path.native());
}

NSData* dataOf(std::string_view bytes) {
    return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

/// The handle's operations raise exceptions, on a full disk above all. Returns whether all was written;
/// otherwise the file has the length that it had.
bool appendThrough(NSFileHandle* handle, NSData* data, const fs::path& file) {
    bool seeking = true;
    unsigned long long end = 0;
    @try {
        end = [handle seekToEndOfFile];
        seeking = false;
        [handle writeData:data];
        return true;
    } @catch (...) {
        std::error_code ignored;
        if (!seeking) fs::resize_file(file, end, ignored);
        return false;
    }
}

}  // namespace

std::optional<fs::path> FoundationFiles::applicationSupportDirectory() {
    @autoreleasepool {
        NSArray<NSURL*>* const folders =
            [NSFileManager.defaultManager URLsForDirectory:NSApplicationSupportDirectory
                                                 inDomains:NSUserDomainMask];
        const auto first = textOf(folders.firstObject.path);
        return first ? std::optional(fs::path(*first)) : std::nullopt;
    }
}

void FoundationFiles::createDirectory(const fs::path& folder) {
    @autoreleasepool {
        NSURL* const url = [NSURL fileURLWithPath:pathOf(folder) isDirectory:YES];
        [NSFileManager.defaultManager createDirectoryAtURL:url
                               withIntermediateDirectories:YES
                                                attributes:nil
                                                     error:nil];
    }
}

bool FoundationFiles::fileExists(const fs::path& file) {
    @autoreleasepool {
        return [NSFileManager.defaultManager fileExistsAtPath:pathOf(file)];
    }
}

bool FoundationFiles::appendToFile(const fs::path& file, std::string_view bytes) {
    @autoreleasepool {
        NSURL* const url = [NSURL fileURLWithPath:pathOf(file)];
        NSFileHandle* const handle = [NSFileHandle fileHandleForWritingToURL:url error:nil];
        if (handle == nil) return false;
        const bool done = appendThrough(handle, dataOf(bytes), file);
        [handle closeAndReturnError:nil];
        return done;
    }
}

bool FoundationFiles::createFile(const fs::path& file, std::string_view bytes) {
    @autoreleasepool {
        if ([dataOf(bytes) writeToURL:[NSURL fileURLWithPath:pathOf(file)] atomically:NO]) return true;
        std::error_code ignored;
        fs::remove(file, ignored);  // what was written of it
        return false;
    }
}

bool FoundationFiles::replaceFile(const fs::path& file, std::string_view bytes) {
    @autoreleasepool {
        return [dataOf(bytes) writeToURL:[NSURL fileURLWithPath:pathOf(file)] atomically:YES];
    }
}

}  // namespace purlock::host_macos
