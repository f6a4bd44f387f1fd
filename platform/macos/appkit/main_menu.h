#pragma once

#include <AppKit/AppKit.h>

/// What the menu's Close asks of the key window.
@protocol PurlockClosing
- (void)closePanel:(nullable id)sender;
@end

namespace purlock::host_macos {

/// Gives the application a menu with Close and Quit. An accessory shows no menu bar, but the key window finds
/// the keys Command-W and Command-Q in it. For Objective-C++ files; once, at the launch, main thread.
void installMainMenu();

}  // namespace purlock::host_macos
