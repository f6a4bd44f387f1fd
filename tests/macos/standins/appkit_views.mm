// AppKit's views and controls. Most of what a property does here is to keep its value.

#include <algorithm>

#include "tests/macos/standins/inspection.h"
#include "tests/macos/standins/values.h"

#pragma clang diagnostic ignored "-Wincomplete-implementation"
#pragma clang diagnostic ignored "-Wnullable-to-nonnull-conversion"

using namespace purlock::standins;

extern "C" {
void objc_msgSend();
bool objc_opt_respondsToSelector(id object, SEL selector);
}

namespace purlock::standins {
NSLayoutAnchor* anchorNamed(Class type, const std::string& name, NSView* view);
}

namespace {

std::vector<std::string> openedMenu;
std::string nextChoice;

template <typename Anchor>
Anchor* anchor(const char* name, NSView* view) {
    return static_cast<Anchor*>(anchorNamed([Anchor class], name, view));
}

std::string priorityText(const char* kind, NSLayoutPriority priority,
                         NSLayoutConstraintOrientation orientation) {
    const bool isRow = orientation == NSLayoutConstraintOrientationHorizontal;
    return std::string(kind) + (isRow ? " horizontal " : " vertical ") +
           std::to_string(static_cast<int>(priority));
}

}  // namespace

const CGFloat NSViewNoIntrinsicMetric = -1;
const NSAccessibilityRole NSAccessibilityImageRole = @"AXImage";
const NSAccessibilityRole NSAccessibilityPopUpButtonRole = @"AXPopUpButton";

@implementation NSResponder
- (void)cancelOperation:(id)sender {
}
@end

@interface NSView () {
  @public
    std::vector<NSView*> subviews_;
    std::vector<NSView*> arranged_;
    NSString* accessibilityLabel_;
    NSString* accessibilityRole_;
    id accessibilityValue_;
    BOOL isAccessibilityElement_;
    std::vector<std::string> priorities_;
}
@property(nullable, unsafe_unretained) NSView* superview;
@end

@implementation NSView
- (instancetype)initWithFrame:(NSRect)frameRect {
    self.frame = frameRect;
    self.alphaValue = 1;
    self.translatesAutoresizingMaskIntoConstraints = YES;
    return self;
}
- (void)dealloc {
    for (NSView* const& child : subviews_) child.superview = nil;
}
- (NSRect)bounds {
    return NSMakeRect(0, 0, self.frame.size.width, self.frame.size.height);
}
- (BOOL)isFlipped {
    return NO;
}
- (NSWindow*)window {
    return nil;
}
- (void)addSubview:(NSView*)view {
    [view removeFromSuperview];
    subviews_.push_back(view);
    view.superview = self;
}
- (void)removeFromSuperview {
    NSView* const parent = self.superview;
    if (parent == nil) return;
    self.superview = nil;
    NSView* const kept = self;  // the parent may hold the last reference
    std::erase(parent->arranged_, kept);
    std::erase(parent->subviews_, kept);
}
- (NSView*)hitTest:(NSPoint)point {
    return subviews_.empty() ? self : subviews_.back();
}
- (BOOL)acceptsFirstMouse:(NSEvent*)event {
    return NO;
}
- (instancetype)animator {
    return self;
}
- (void)setAccessibilityLabel:(NSString*)label {
    accessibilityLabel_ = label;
}
- (void)setAccessibilityElement:(BOOL)isElement {
    isAccessibilityElement_ = isElement;
}
- (void)setAccessibilityRole:(NSAccessibilityRole)role {
    accessibilityRole_ = role;
}
- (void)setAccessibilityValue:(id)value {
    accessibilityValue_ = value;
}
- (NSSize)intrinsicContentSize {
    return NSSize{NSViewNoIntrinsicMetric, NSViewNoIntrinsicMetric};
}
- (void)setContentHuggingPriority:(NSLayoutPriority)priority
                   forOrientation:(NSLayoutConstraintOrientation)orientation {
    // Where there is no size of its own, there is nothing to hug.
    if ([self isKindOfClass:[NSStackView class]] || [self isKindOfClass:[NSScrollView class]]) {
        World::current().note("hugging of no effect");
    }
    priorities_.push_back(priorityText("hugging", priority, orientation));
}
- (void)setContentCompressionResistancePriority:(NSLayoutPriority)priority
                                 forOrientation:(NSLayoutConstraintOrientation)orientation {
    priorities_.push_back(priorityText("resistance", priority, orientation));
}
- (NSLayoutXAxisAnchor*)leadingAnchor {
    return anchor<NSLayoutXAxisAnchor>("leading", self);
}
- (NSLayoutXAxisAnchor*)trailingAnchor {
    return anchor<NSLayoutXAxisAnchor>("trailing", self);
}
- (NSLayoutYAxisAnchor*)topAnchor {
    return anchor<NSLayoutYAxisAnchor>("top", self);
}
- (NSLayoutYAxisAnchor*)bottomAnchor {
    return anchor<NSLayoutYAxisAnchor>("bottom", self);
}
- (NSLayoutDimension*)widthAnchor {
    return anchor<NSLayoutDimension>("width", self);
}
- (NSLayoutDimension*)heightAnchor {
    return anchor<NSLayoutDimension>("height", self);
}
- (NSLayoutXAxisAnchor*)centerXAnchor {
    return anchor<NSLayoutXAxisAnchor>("centerX", self);
}
- (NSLayoutYAxisAnchor*)centerYAnchor {
    return anchor<NSLayoutYAxisAnchor>("centerY", self);
}
@end

@implementation NSStackView
- (void)setHuggingPriority:(NSLayoutPriority)priority
            forOrientation:(NSLayoutConstraintOrientation)orientation {
    priorities_.push_back(priorityText("stack hugging", priority, orientation));
}
- (void)insertArrangedSubview:(NSView*)view atIndex:(NSInteger)index {
    if (view.superview != self) [self addSubview:view];
    std::erase(arranged_, view);
    arranged_.insert(arranged_.begin() + index, view);
    World::current().note("insertArrangedSubview");
}
@end

@implementation NSClipView
@end

@implementation NSScrollView {
    NSClipView* clip_;
    NSView* document_;
}
@dynamic contentView, documentView;
- (NSClipView*)contentView {
    if (clip_ == nil) {
        clip_ = [[NSClipView alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)];
        [self addSubview:clip_];
    }
    return clip_;
}
- (void)setContentView:(NSClipView*)view {
    clip_ = view;
}
- (NSView*)documentView {
    return document_;
}
- (void)setDocumentView:(NSView*)view {
    [document_ removeFromSuperview];
    document_ = view;
    if (view != nil) [self.contentView addSubview:view];
}
@end

@implementation NSBox
@end
@implementation NSControl
@end
@implementation NSImageView
@end
@implementation NSButton
- (NSSize)intrinsicContentSize {
    return NSMakeRect(0, 0, 10, 16).size;  // its cell has one, also with an empty title
}
@end
@implementation NSSwitch
@end

@implementation NSTextField
+ (instancetype)labelWithString:(NSString*)text {
    NSTextField* const field = [[self alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)];
    field.stringValue = text;
    return field;
}
+ (instancetype)wrappingLabelWithString:(NSString*)text {
    NSTextField* const field = [self labelWithString:text];
    field.selectable = YES;
    return field;
}
@end

@interface NSMenuItem () {
  @public
    SEL action_;
    NSString* key_;
    BOOL isSeparator_;
}
@end

@implementation NSMenuItem
+ (NSMenuItem*)separatorItem {
    NSMenuItem* const item = [NSMenuItem new];
    item->isSeparator_ = YES;
    return item;
}
@end

@interface NSMenu () {
  @public
    std::vector<NSMenuItem*> items_;
}
@end

@implementation NSMenu
- (NSMenuItem*)addItemWithTitle:(NSString*)title action:(SEL)selector keyEquivalent:(NSString*)charCode {
    NSMenuItem* const item = [NSMenuItem new];
    item.title = title;
    item->action_ = selector;
    item->key_ = charCode;
    items_.push_back(item);
    return item;
}
- (void)addItem:(NSMenuItem*)item {
    items_.push_back(item);
}
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view {
    openedMenu.clear();
    for (NSMenuItem* const& shown : items_) {
        openedMenu.push_back(shown->isSeparator_ ? "-" : utf8(shown.title));
    }
    const std::string choice = std::exchange(nextChoice, {});
    for (NSMenuItem* const& shown : items_) {
        if (shown->isSeparator_ || utf8(shown.title) != choice) continue;
        const id target = shown.target;
        if (target == nil) continue;  // nobody keeps it
        reinterpret_cast<void (*)(id, SEL, id)>(objc_msgSend)(target, shown->action_, shown);
        return YES;
    }
    return NO;
}
@end

namespace purlock::standins {

std::vector<NSView*> subviewsOf(NSView* view) {
    return view->arranged_.empty() ? view->subviews_ : view->arranged_;
}

std::vector<NSView*> viewsOfClass(NSView* view, Class type) {
    std::vector<NSView*> found;
    if ([view isKindOfClass:type]) found.push_back(view);
    for (NSView* const& child : subviewsOf(view)) {
        const auto below = viewsOfClass(child, type);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

NSString* accessibilityLabelOf(NSView* view) {
    return view->accessibilityLabel_;
}

std::vector<std::string> prioritiesOf(NSView* view) {
    return view->priorities_;
}

AccessibilityFacts accessibilityOf(NSView* view) {
    const auto text = [](NSString* held) { return held == nil ? std::string() : utf8(held); };
    return {static_cast<bool>(view->isAccessibilityElement_), text(view->accessibilityLabel_),
            text(view->accessibilityRole_), text(view->accessibilityValue_)};
}

std::vector<std::string> keysOf(NSMenu* menu) {
    std::vector<std::string> lines;
    for (NSMenuItem* const& item : menu->items_) {
        if (item->action_ != nullptr) {
            lines.push_back(utf8(item.title) + " " + utf8(item->key_) + " " +
                            static_cast<const char*>(static_cast<void*>(item->action_)));
        }
        if (item.submenu == nil) continue;
        for (const std::string& line : keysOf(item.submenu)) lines.push_back(line);
    }
    return lines;
}

void pressKey(NSMenu* menu, const std::string& key, const std::vector<id>& responders) {
    for (NSMenuItem* const& item : menu->items_) {
        if (item.submenu != nil) pressKey(item.submenu, key, responders);
        if (item->action_ == nullptr || utf8(item->key_) != key) continue;
        for (const id& responder : responders) {
            if (!objc_opt_respondsToSelector(responder, item->action_)) continue;
            reinterpret_cast<void (*)(id, SEL, id)>(objc_msgSend)(responder, item->action_, item);
            break;
        }
    }
}

void click(NSControl* control) {
    @autoreleasepool {
        const id target = control.target;
        if (target == nil || control.action == nullptr) return;
        reinterpret_cast<void (*)(id, SEL, id)>(objc_msgSend)(target, control.action, control);
    }
}

std::vector<std::string> lastMenu() {
    return openedMenu;
}

void chooseInNextMenu(const std::string& title) {
    nextChoice = title;
}

}  // namespace purlock::standins
