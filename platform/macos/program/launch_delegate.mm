#include "platform/macos/program/launch_delegate.h"

#include <memory>

#include "platform/macos/program/macos_host.h"

@implementation PurlockLaunchDelegate {
    std::unique_ptr<purlock::host_macos::MacHost> host_;
    std::shared_ptr<purlock::AppDelegate> shell_;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    host_ = std::make_unique<purlock::host_macos::MacHost>();
    host_->provideSharedServices();
    shell_ = std::make_shared<purlock::AppDelegate>(host_->seams());
    shell_->applicationDidFinishLaunching();
}

@end
