#include "platform/macos/appkit/shell_services.h"

#include <AppKit/AppKit.h>

#include <utility>

#include "platform/macos/accessibility/ax_tree.h"
#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

namespace {

static_assert(static_cast<NSInteger>(ActivationPolicy::accessory) == NSApplicationActivationPolicyAccessory);
static_assert(EventMonitor::leftMouseDown == NSEventMaskLeftMouseDown);
static_assert(EventMonitor::rightMouseDown == NSEventMaskRightMouseDown);

/// A monitor that the system has. The system keeps its block until the removal: the block holds what it calls
/// weakly.
class InstalledMonitor {
  public:
    InstalledMonitor(NSEventMask mask, std::function<void()> handler)
        : handler_(std::make_shared<const std::function<void()>>(std::move(handler))) {
        const std::weak_ptr<const std::function<void()>> weak = handler_;
        token_ = [NSEvent addGlobalMonitorForEventsMatchingMask:mask
                                                        handler:^(NSEvent* /*event*/) {
                                                          if (const auto kept = weak.lock()) (*kept)();
                                                        }];
    }
    ~InstalledMonitor() {
        if (token_ != nil) [NSEvent removeMonitor:token_];
    }
    InstalledMonitor(const InstalledMonitor&) = delete;
    InstalledMonitor& operator=(const InstalledMonitor&) = delete;

    bool wasGranted() const { return token_ != nil; }

  private:
    const std::shared_ptr<const std::function<void()>> handler_;
    id token_;
};

}  // namespace

void SharedApplication::setActivationPolicy(ActivationPolicy policy) {
    [NSApplication.sharedApplication setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

void SharedApplication::activateIgnoringOtherApps() {
    [NSApplication.sharedApplication activateIgnoringOtherApps:YES];
}

void SharedApplication::terminate() {
    [NSApplication.sharedApplication terminate:nil];
}

Cancellable GlobalEventMonitor::addGlobalMonitor(Mask mask, std::function<void()> handler) {
    auto monitor = std::make_shared<InstalledMonitor>(mask, std::move(handler));
    return monitor->wasGranted() ? Cancellable(std::move(monitor)) : Cancellable();
}

void SharedWorkspace::openURL(const std::filesystem::path& file) {
    NSURL* const url = [NSURL fileURLWithPath:makeNSString(file.native())];
    // A Mac on which nobody has chosen a program for such files has none: then the Finder shows the file.
    if (![NSWorkspace.sharedWorkspace openURL:url]) {
        [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ url ]];
    }
}

void SystemAccessibilityPrompt::request() {
    promptForAccessibility();
}

}  // namespace purlock::host_macos
