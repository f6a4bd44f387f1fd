#include <AppKit/AppKit.h>

#include "platform/macos/program/launch_delegate.h"

int main() {
    @autoreleasepool {
        NSApplication* const application = NSApplication.sharedApplication;
        static PurlockLaunchDelegate* const delegate = [PurlockLaunchDelegate new];
        application.delegate = delegate;
        [application run];
    }
    return 0;
}
