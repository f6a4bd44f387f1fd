// The application, windows, the status bar, event monitors and the workspace.

#include "tests/macos/standins/inspection.h"
#include "tests/macos/standins/values.h"

#pragma clang diagnostic ignored "-Wincomplete-implementation"
#pragma clang diagnostic ignored "-Wnullability"

using namespace purlock::standins;

namespace {

NSPanel* __unsafe_unretained lastPanel;
std::vector<NSStatusItem*> items;  // the bar's own references
NSEventMask monitorMask;
void (^monitorBlock)(NSEvent* event);
id monitorToken;

}  // namespace

@implementation NSApplication
+ (NSApplication*)sharedApplication {
    static NSApplication* const shared = [NSApplication new];
    return shared;
}
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
    World::current().note("setActivationPolicy: " + std::to_string(policy));
    return YES;
}
- (void)activateIgnoringOtherApps:(BOOL)ignore {
    World::current().note("activateIgnoringOtherApps: " + std::to_string(ignore));
}
- (void)terminate:(id)sender {
    World::current().note("terminate:");
}
- (void)run {
    World::current().note("run");
    const id<NSApplicationDelegate> delegate = self.delegate;  // a weak reference, as in AppKit
    if (delegate == nil) {
        World::current().note("nobody to launch");
        return;
    }
    [delegate applicationDidFinishLaunching:[NSNotification new]];
}
@end

@interface NSRunningApplication () {
  @public
    purlock::RunningApplication application_;
}
@end

static NSRunningApplication* running(const purlock::RunningApplication& application) {
    NSRunningApplication* const made = [NSRunningApplication new];
    made->application_ = application;
    return made;
}

@implementation NSRunningApplication
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid {
    for (const auto& application : World::current().applications) {
        if (application.processIdentifier == pid) return running(application);
    }
    return nil;
}
+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
    std::vector<id> found;
    for (const auto& application : World::current().applications) {
        if (application.bundleIdentifier == utf8(identifier)) found.push_back(running(application));
    }
    return array(found);
}
- (pid_t)processIdentifier {
    return application_.processIdentifier;
}
- (NSString*)bundleIdentifier {
    return stringOrNil(application_.bundleIdentifier);
}
- (NSString*)localizedName {
    return stringOrNil(application_.localizedName);
}
@end

@implementation NSWindow {
    NSRect frame_;
    BOOL visible_;
}
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer {
    frame_ = rect;
    // A window that nobody has set up: each value is another than the program wants, so that none may be left
    // out.
    self.movableByWindowBackground = YES;
    self.opaque = YES;
    self.releasedWhenClosed = YES;
    if ([self isKindOfClass:[NSPanel class]]) {
        lastPanel = static_cast<NSPanel*>(self);
        World::current().note("panel " + std::to_string(style) + " " + std::to_string(backing) + " " +
                              std::to_string(defer));
    }
    return self;
}
- (void)dealloc {
    if (lastPanel == self) lastPanel = nil;
}
- (NSRect)frame {
    return frame_;
}
- (BOOL)isVisible {
    // The system hides such a panel while the program is not active, and shows it again by itself.
    return visible_ && (World::current().isActive || !self.hidesOnDeactivate);
}
- (BOOL)canBecomeKeyWindow {
    return NO;  // no title bar, no resize bar
}
- (void)setFrameOrigin:(NSPoint)point {
    frame_.origin = point;
}
- (void)makeKeyAndOrderFront:(id)sender {
    visible_ = YES;
    World::current().note(self.canBecomeKeyWindow ? "key and front" : "front");
}
- (void)orderOut:(id)sender {
    if (visible_) World::current().note("orderOut:");
    visible_ = NO;
}
@end

@implementation NSPanel
@end
@implementation NSVisualEffectView
@end

@interface NSStatusBarButton () {
  @public
    NSWindow* window_;
}
@end

@implementation NSStatusBarButton
- (NSWindow*)window {
    const auto& frame = World::current().itemFrame;
    if (!frame) return nil;
    if (window_ == nil) {
        const NSRect rect = NSMakeRect(frame->x, frame->y, frame->width, frame->height);
        window_ = [[NSWindow alloc] initWithContentRect:rect
                                              styleMask:0
                                                backing:NSBackingStoreBuffered
                                                  defer:NO];
    }
    return window_;
}
@end

@interface NSStatusItem () {
  @public
    NSStatusBarButton* button_;
}
@end

@implementation NSStatusItem
- (NSStatusBarButton*)button {
    return button_;
}
@end

@implementation NSStatusBar
+ (NSStatusBar*)systemStatusBar {
    static NSStatusBar* const shared = [NSStatusBar new];
    return shared;
}
- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
    World::current().note("statusItemWithLength: " + std::to_string(static_cast<int>(length)));
    NSStatusItem* const item = [NSStatusItem new];
    if (World::current().itemsHaveButtons) {
        item->button_ = [[NSStatusBarButton alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)];
    }
    items.push_back(item);
    return item;
}
- (void)removeStatusItem:(NSStatusItem*)item {
    std::erase(items, item);
}
@end

@implementation NSEvent
+ (id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent*))block {
    World::current().note("addGlobalMonitor " + std::to_string(mask));
    if (World::current().refusesMonitors) return nil;
    monitorMask = mask;
    monitorBlock = block;
    monitorToken = [NSObject new];
    return monitorToken;
}
+ (void)removeMonitor:(id)token {
    World::current().note(token == monitorToken ? "removeMonitor:" : "removeMonitor: of another");
    monitorBlock = nil;
    monitorToken = nil;
}
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
    static NSWorkspace* const shared = [NSWorkspace new];
    return shared;
}
- (BOOL)openURL:(NSURL*)url {
    World::current().note("openURL: " + utf8(url.path));
    return !World::current().opensNothing;
}
- (void)activateFileViewerSelectingURLs:(NSArray<NSURL*>*)urls {
    for (NSURL* url in urls) World::current().note("select in Finder: " + utf8(url.path));
}
@end

namespace purlock::standins {

NSPanel* panel() {
    return lastPanel;
}

std::vector<NSStatusItem*> itemsInBar() {
    return items;
}

void clickOutside() {
    void (^const block)(NSEvent*) = monitorBlock;
    @autoreleasepool {
        if (block != nil) block([NSEvent new]);
    }
}

bool hasEventMonitor() {
    return monitorBlock != nil;
}

}  // namespace purlock::standins
