#include "platform/macos/program/launch_delegate.h"

#include <memory>

#include "platform/macos/appkit/main_menu.h"
#include "platform/macos/program/macos_host.h"

@implementation PurlockLaunchDelegate {
    std::unique_ptr<purlock::host_macos::MacHost> host_;
    std::shared_ptr<purlock::AppDelegate> shell_;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    purlock::host_macos::installMainMenu();
    host_ = std::make_unique<purlock::host_macos::MacHost>();
    host_->provideSharedServices();
    shell_ = std::make_shared<purlock::AppDelegate>(host_->seams());
    shell_->applicationDidFinishLaunching();
}

/// There is no window to be restored; the system logs a complaint where this is not answered.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)app {
    return YES;
}

@end
