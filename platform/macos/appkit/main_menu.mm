#include "platform/macos/appkit/main_menu.h"

namespace purlock::host_macos {

void installMainMenu() {
    NSMenu* const entries = [NSMenu new];
    // Without a target: the window with the keyboard is asked first, the application last.
    [entries addItemWithTitle:@"Close" action:@selector(closePanel:) keyEquivalent:@"w"];
    [entries addItemWithTitle:@"Quit Purlock" action:@selector(terminate:) keyEquivalent:@"q"];
    NSMenu* const bar = [NSMenu new];
    NSMenuItem* const first = [bar addItemWithTitle:@"Purlock" action:nil keyEquivalent:@""];
    first.submenu = entries;
    NSApplication.sharedApplication.mainMenu = bar;
}

}  // namespace purlock::host_macos
