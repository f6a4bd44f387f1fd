#pragma once

#include <AppKit/AppKit.h>

/// Waits for the application to be launched, then makes the host and the shell on it and starts them. The
/// application holds its delegate weakly: the main function keeps it.
@interface PurlockLaunchDelegate : NSObject <NSApplicationDelegate>
@end
