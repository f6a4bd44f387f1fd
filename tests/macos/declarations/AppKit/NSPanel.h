#pragma once

#include <Foundation/Foundation.h>

#include "NSView.h"

// Windows. Values: pyobjc. Selectors, types and versions: objc2. Main thread only.

#pragma clang assume_nonnull begin

typedef NSInteger NSWindowLevel;
static const NSWindowLevel NSPopUpMenuWindowLevel = 101;

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask) {
    NSWindowStyleMaskNonactivatingPanel = 1 << 7,
    NSWindowStyleMaskFullSizeContentView = 1 << 15,
};
typedef NS_ENUM(NSUInteger, NSBackingStoreType) { NSBackingStoreBuffered = 2 };
typedef NS_ENUM(NSInteger, NSWindowTitleVisibility) { NSWindowTitleVisible = 0, NSWindowTitleHidden = 1 };
typedef NS_OPTIONS(NSUInteger, NSWindowCollectionBehavior) {
    NSWindowCollectionBehaviorCanJoinAllSpaces = 1 << 0,
    NSWindowCollectionBehaviorFullScreenAuxiliary = 1 << 8,
};

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;
@property(nullable, strong) __kindof NSView* contentView;
@property(readonly) NSRect frame;  // on the screen, whose origin is the bottom left corner
@property(readonly, getter=isVisible) BOOL visible;
// Yes only for a window with a title bar or a resize bar; others are not made key (Apple's documentation).
@property(readonly) BOOL canBecomeKeyWindow;
@property(copy) NSString* title;
@property NSWindowLevel level;
@property NSWindowCollectionBehavior collectionBehavior;
@property NSWindowTitleVisibility titleVisibility MACOS_SINCE(10.10);
@property BOOL titlebarAppearsTransparent MACOS_SINCE(10.10);
@property(getter=isMovableByWindowBackground) BOOL movableByWindowBackground;
@property(getter=isOpaque) BOOL opaque;
@property BOOL hasShadow;
@property BOOL hidesOnDeactivate;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property(null_resettable, copy) NSColor* backgroundColor;
- (void)setFrameOrigin:(NSPoint)point;
- (void)makeKeyAndOrderFront:(nullable id)sender;
- (void)orderOut:(nullable id)sender;
@end

@interface NSPanel : NSWindow
@end

typedef NS_ENUM(NSInteger, NSVisualEffectMaterial) { NSVisualEffectMaterialPopover = 6 };
typedef NS_ENUM(NSInteger, NSVisualEffectState) { NSVisualEffectStateActive = 1 };
typedef NS_ENUM(NSInteger, NSVisualEffectBlendingMode) { NSVisualEffectBlendingModeBehindWindow = 0 };

MACOS_SINCE(10.10)
@interface NSVisualEffectView : NSView
@property NSVisualEffectMaterial material;
@property NSVisualEffectState state;
@property NSVisualEffectBlendingMode blendingMode;
@end

#pragma clang assume_nonnull end
