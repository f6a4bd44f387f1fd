#pragma once

#include <Foundation/Foundation.h>

// Views and what they draw with. Main thread only.
//
// Selectors, types and values: objc2, and pyobjc for views, images, symbols, colours, fonts, paths and
// anchors. Unchecked: the values of NSControlSize and NSLineBreakMode, NSAnimationContext's timing function,
// setAccessibilityLabel: and setAccessibilityElement:, cancelOperation:, and most of the versions.

#pragma clang assume_nonnull begin

// CAMediaTimingFunction is QuartzCore's: AppKit only names it.
@class NSWindow, NSEvent, NSMenu, NSImage, NSColor, NSFont, NSLayoutConstraint, NSAppearance;
@class CAMediaTimingFunction;

@interface NSResponder : NSObject
- (void)cancelOperation:(nullable id)sender;  // Escape
@end

// What is drawn.

typedef CGFloat NSFontWeight;
MACOS_EXTERN const NSFontWeight NSFontWeightRegular MACOS_SINCE(10.11);
MACOS_EXTERN const NSFontWeight NSFontWeightMedium MACOS_SINCE(10.11);
MACOS_EXTERN const NSFontWeight NSFontWeightSemibold MACOS_SINCE(10.11);
MACOS_EXTERN const NSFontWeight NSFontWeightBold MACOS_SINCE(10.11);

typedef NS_OPTIONS(UInt32, NSFontDescriptorSymbolicTraits) { NSFontDescriptorTraitItalic = 1 << 0 };

@interface NSFontDescriptor : NSObject
- (NSFontDescriptor*)fontDescriptorWithSymbolicTraits:(NSFontDescriptorSymbolicTraits)symbolicTraits;
@end

@interface NSFont : NSObject
+ (NSFont*)systemFontOfSize:(CGFloat)fontSize weight:(NSFontWeight)weight MACOS_SINCE(10.11);
+ (nullable NSFont*)fontWithDescriptor:(NSFontDescriptor*)fontDescriptor size:(CGFloat)fontSize;
@property(readonly, copy) NSFontDescriptor* fontDescriptor;
@property(readonly) CGFloat pointSize;
@end

@interface NSColor : NSObject
@property(class, strong, readonly) NSColor* clearColor;
+ (NSColor*)colorWithSRGBRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
- (void)setFill;
- (void)setStroke;
@end

@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPathWithRect:(NSRect)rect;
+ (NSBezierPath*)bezierPathWithOvalInRect:(NSRect)rect;
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect xRadius:(CGFloat)xRadius yRadius:(CGFloat)yRadius;
@property CGFloat lineWidth;
- (void)fill;
- (void)stroke;
@end

MACOS_SINCE(11.0)
@interface NSImageSymbolConfiguration : NSObject
+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight;
@end

@interface NSImage : NSObject
+ (nullable instancetype)imageWithSystemSymbolName:(NSString*)name
                          accessibilityDescription:(nullable NSString*)description MACOS_SINCE(11.0);
- (nullable NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration
    MACOS_SINCE(11.0);
- (void)setTemplate:(BOOL)isTemplate;  // a property of that name cannot be written in C++
@end

typedef NSString* NSAppearanceName;
MACOS_EXTERN const NSAppearanceName NSAppearanceNameVibrantDark MACOS_SINCE(10.10);

@interface NSAppearance : NSObject
+ (nullable NSAppearance*)appearanceNamed:(NSAppearanceName)name;
@end

// Where it stands.

typedef float NSLayoutPriority;
typedef NS_ENUM(NSInteger, NSLayoutConstraintOrientation) {
    NSLayoutConstraintOrientationHorizontal = 0,
    NSLayoutConstraintOrientationVertical = 1,
};
typedef NS_ENUM(NSInteger, NSUserInterfaceLayoutOrientation) {
    NSUserInterfaceLayoutOrientationHorizontal = 0,
    NSUserInterfaceLayoutOrientationVertical = 1,
};
typedef NS_ENUM(NSInteger, NSLayoutAttribute) { NSLayoutAttributeLeading = 5, NSLayoutAttributeCenterY = 10 };

@class NSLayoutXAxisAnchor, NSLayoutYAxisAnchor, NSLayoutDimension;

@interface NSLayoutAnchor<AnchorType> : NSObject
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor;
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor constant:(CGFloat)c;
- (NSLayoutConstraint*)constraintLessThanOrEqualToAnchor:(NSLayoutAnchor<AnchorType>*)anchor;
@end
@interface NSLayoutXAxisAnchor : NSLayoutAnchor <NSLayoutXAxisAnchor*>
@end
@interface NSLayoutYAxisAnchor : NSLayoutAnchor <NSLayoutYAxisAnchor*>
@end
@interface NSLayoutDimension : NSLayoutAnchor <NSLayoutDimension*>
- (NSLayoutConstraint*)constraintEqualToConstant:(CGFloat)c;
@end

@interface NSLayoutConstraint : NSObject
+ (void)activateConstraints:(NSArray<NSLayoutConstraint*>*)constraints MACOS_SINCE(10.10);
@property CGFloat constant;
@end

typedef NSString* NSAccessibilityRole;
MACOS_EXTERN const NSAccessibilityRole NSAccessibilityImageRole;
MACOS_EXTERN const NSAccessibilityRole NSAccessibilityPopUpButtonRole;

MACOS_EXTERN const CGFloat NSViewNoIntrinsicMetric MACOS_SINCE(10.11);

@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frameRect;
@property(nullable, readonly, unsafe_unretained) NSWindow* window;
@property(nullable, readonly, unsafe_unretained) NSView* superview;
@property(nullable, strong) NSAppearance* appearance;
@property NSRect frame;
@property(readonly) NSRect bounds;
@property(readonly) NSSize intrinsicContentSize;
@property CGFloat alphaValue;
@property BOOL needsDisplay;
@property(readonly, getter=isFlipped) BOOL flipped;
@property(nullable, copy) NSString* toolTip;
@property BOOL translatesAutoresizingMaskIntoConstraints;
@property(readonly, strong) NSLayoutXAxisAnchor* leadingAnchor MACOS_SINCE(10.11);
@property(readonly, strong) NSLayoutXAxisAnchor* trailingAnchor MACOS_SINCE(10.11);
@property(readonly, strong) NSLayoutYAxisAnchor* topAnchor MACOS_SINCE(10.11);
@property(readonly, strong) NSLayoutYAxisAnchor* bottomAnchor MACOS_SINCE(10.11);
@property(readonly, strong) NSLayoutDimension* widthAnchor MACOS_SINCE(10.11);
@property(readonly, strong) NSLayoutDimension* heightAnchor MACOS_SINCE(10.11);
@property(readonly, strong) NSLayoutXAxisAnchor* centerXAnchor MACOS_SINCE(10.11);
@property(readonly, strong) NSLayoutYAxisAnchor* centerYAnchor MACOS_SINCE(10.11);
- (void)addSubview:(NSView*)view;
- (void)removeFromSuperview;
- (nullable NSView*)hitTest:(NSPoint)point;
- (void)drawRect:(NSRect)dirtyRect;
- (BOOL)acceptsFirstMouse:(nullable NSEvent*)event;
- (void)setContentHuggingPriority:(NSLayoutPriority)priority
                   forOrientation:(NSLayoutConstraintOrientation)orientation;
- (void)setContentCompressionResistancePriority:(NSLayoutPriority)priority
                                 forOrientation:(NSLayoutConstraintOrientation)orientation;
- (instancetype)animator;  // changes through it are animated
- (void)setAccessibilityLabel:(nullable NSString*)accessibilityLabel MACOS_SINCE(10.10);
- (void)setAccessibilityElement:(BOOL)accessibilityElement MACOS_SINCE(10.10);
- (void)setAccessibilityRole:(nullable NSAccessibilityRole)accessibilityRole MACOS_SINCE(10.10);
- (void)setAccessibilityValue:(nullable id)accessibilityValue MACOS_SINCE(10.10);
@end

@interface NSAnimationContext : NSObject
+ (void)runAnimationGroup:(void (^)(NSAnimationContext* context))changes MACOS_SINCE(10.12);
@property NSTimeInterval duration;
@property(nullable, strong) CAMediaTimingFunction* timingFunction;
@end

typedef NS_ENUM(NSInteger, NSStackViewDistribution) { NSStackViewDistributionFill = 0 };

@interface NSStackView : NSView
@property NSUserInterfaceLayoutOrientation orientation;
@property NSLayoutAttribute alignment;
@property NSStackViewDistribution distribution MACOS_SINCE(10.11);
@property CGFloat spacing;
- (void)insertArrangedSubview:(NSView*)view atIndex:(NSInteger)index MACOS_SINCE(10.11);
// A stack has no size of its own to hug: this is its own way (Apple's documentation).
- (void)setHuggingPriority:(NSLayoutPriority)huggingPriority
            forOrientation:(NSLayoutConstraintOrientation)orientation;
@end

@interface NSClipView : NSView
@end

@interface NSScrollView : NSView
@property(strong) NSClipView* contentView;
@property(nullable, strong) __kindof NSView* documentView;
@property BOOL hasVerticalScroller;
@property BOOL drawsBackground;
@end

typedef NS_ENUM(NSUInteger, NSBoxType) { NSBoxSeparator = 2 };

@interface NSBox : NSView
@property NSBoxType boxType;
@end

// Controls.

typedef NS_ENUM(NSUInteger, NSControlSize) { NSControlSizeMini = 2 };
typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;
typedef NS_ENUM(NSUInteger, NSLineBreakMode) {
    NSLineBreakByWordWrapping = 0,
    NSLineBreakByTruncatingTail = 4
};

@interface NSControl : NSView
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property NSControlSize controlSize MACOS_SINCE(10.10);
@property(copy) NSString* stringValue;
@property(nullable, strong) NSFont* font;
@property NSLineBreakMode lineBreakMode MACOS_SINCE(10.10);
@property BOOL usesSingleLineMode MACOS_SINCE(10.10);
@end

@interface NSImageView : NSControl
@property(nullable, strong) NSImage* image;
@property(nullable, copy) NSColor* contentTintColor MACOS_SINCE(10.14);
@end

@interface NSButton : NSControl
@property(copy) NSString* title;
@property(nullable, strong) NSImage* image;
@property(getter=isBordered) BOOL bordered;
@end

MACOS_SINCE(10.15)
@interface NSSwitch : NSControl
@property NSControlStateValue state;
@end

@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString*)stringValue MACOS_SINCE(10.12);
+ (instancetype)wrappingLabelWithString:(NSString*)stringValue MACOS_SINCE(10.12);
@property(nullable, copy) NSColor* textColor;
@property(getter=isSelectable) BOOL selectable;
@property CGFloat preferredMaxLayoutWidth;
@property NSInteger maximumNumberOfLines MACOS_SINCE(10.11);
@end

@interface NSMenuItem : NSObject
+ (NSMenuItem*)separatorItem;
@property(nullable, weak) id target;
@property(copy) NSString* title;
@property(nullable, strong) NSMenu* submenu;
@end

@interface NSMenu : NSObject
- (NSMenuItem*)addItemWithTitle:(NSString*)string
                         action:(nullable SEL)selector
                  keyEquivalent:(NSString*)charCode;
- (void)addItem:(NSMenuItem*)newItem;
- (BOOL)popUpMenuPositioningItem:(nullable NSMenuItem*)item
                      atLocation:(NSPoint)location
                          inView:(nullable NSView*)view;
@end

#pragma clang assume_nonnull end
