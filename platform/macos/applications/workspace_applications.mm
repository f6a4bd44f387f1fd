#include "platform/macos/applications/workspace_applications.h"

#include <AppKit/AppKit.h>

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

namespace {

RunningApplication described(NSRunningApplication* application) {
    return {.processIdentifier = application.processIdentifier,
            .bundleIdentifier = textOf(application.bundleIdentifier),
            .localizedName = textOf(application.localizedName)};
}

}  // namespace

std::optional<RunningApplication> WorkspaceApplications::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    @autoreleasepool {
        NSRunningApplication* const found =
            [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
        return found != nil ? std::optional(described(found)) : std::nullopt;
    }
}

std::vector<RunningApplication> WorkspaceApplications::runningApplicationsWithBundleIdentifier(
    std::string_view bundleID) {
    @autoreleasepool {
        std::vector<RunningApplication> applications;
        NSString* const identifier = makeNSString(bundleID);
        for (NSRunningApplication* found in
             [NSRunningApplication runningApplicationsWithBundleIdentifier:identifier]) {
            applications.push_back(described(found));
        }
        return applications;
    }
}

}  // namespace purlock::host_macos
