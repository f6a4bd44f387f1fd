#include "platform/macos/system/process_info.h"

#include <Foundation/Foundation.h>

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

OperatingSystemVersion ProcessInfo::version() const {
    @autoreleasepool {
        const NSOperatingSystemVersion version = NSProcessInfo.processInfo.operatingSystemVersion;
        return {.major = static_cast<int>(version.majorVersion),
                .minor = static_cast<int>(version.minorVersion),
                .patch = static_cast<int>(version.patchVersion)};
    }
}

struct Activity::Token {
    id<NSObject> activity;
};

Activity::Activity(const char* reason) : token_(std::make_unique<Token>()) {
    @autoreleasepool {
        token_->activity =
            [NSProcessInfo.processInfo beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                                         reason:makeNSString(reason)];
    }
}

Activity::~Activity() {
    @autoreleasepool {
        [NSProcessInfo.processInfo endActivity:token_->activity];
    }
}

}  // namespace purlock::host_macos
