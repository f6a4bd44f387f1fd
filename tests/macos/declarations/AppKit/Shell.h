#pragma once

#include <Foundation/Foundation.h>

#include "NSView.h"

// The application, the status item, events and the workspace. Values: pyobjc. Selectors, types and versions:
// objc2. Main thread only, but for NSRunningApplication.

#pragma clang assume_nonnull begin

typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) { NSApplicationActivationPolicyAccessory = 1 };

@class NSApplication;

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)app MACOS_SINCE(12.0);
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
@property(nullable, strong) NSMenu* mainMenu;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps;  // to be deprecated; still there
- (void)terminate:(nullable id)sender;
- (void)run;
@end

@interface NSRunningApplication : NSObject
@property(nullable, readonly, copy) NSString* localizedName;
@property(nullable, readonly, copy) NSString* bundleIdentifier;
@property(readonly) pid_t processIdentifier;
+ (nullable instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid;
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
@end

@interface NSStatusBarButton : NSButton
@end

@interface NSStatusItem : NSObject
@property(nullable, readonly, strong) NSStatusBarButton* button MACOS_SINCE(10.10);
@end

static const CGFloat NSVariableStatusItemLength = -1.0;

@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;  // gone from the bar as soon as nobody keeps it
- (void)removeStatusItem:(NSStatusItem*)item;
@end

typedef NS_OPTIONS(unsigned long long, NSEventMask) {
    NSEventMaskLeftMouseDown = 1ULL << 1,
    NSEventMaskRightMouseDown = 1ULL << 3,
};

@interface NSEvent : NSObject
// Copies of the events that go to other applications. Mouse events need no permission (Apple's
// documentation).
+ (nullable id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask
                                             handler:(void (^)(NSEvent* event))block;
+ (void)removeMonitor:(id)eventMonitor;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;  // no where there is no program for it
- (void)activateFileViewerSelectingURLs:(NSArray<NSURL*>*)fileURLs;
@end

#pragma clang assume_nonnull end
