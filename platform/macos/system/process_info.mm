#include "platform/macos/system/process_info.h"

#include <Foundation/Foundation.h>

namespace purlock::host_macos {

OperatingSystemVersion ProcessInfo::version() const {
    @autoreleasepool {
        const NSOperatingSystemVersion version = NSProcessInfo.processInfo.operatingSystemVersion;
        return {.major = static_cast<int>(version.majorVersion),
                .minor = static_cast<int>(version.minorVersion),
                .patch = static_cast<int>(version.patchVersion)};
    }
}

}  // namespace purlock::host_macos
