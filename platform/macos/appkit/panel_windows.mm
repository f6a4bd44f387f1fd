#include "platform/macos/appkit/panel_windows.h"

#include <AppKit/AppKit.h>

#include <utility>

#include "platform/macos/appkit/drawn_view.h"
#include "platform/macos/appkit/main_menu.h"

/// A panel without a title bar says of itself that it cannot become the key window, and makeKeyAndOrderFront:
/// then only shows it: the keyboard and the Escape key would go elsewhere. So this class says that it can.
@interface PurlockPanel : NSPanel <PurlockClosing>
- (void)setOnCancel:(std::function<void()>)onCancel;
@end

@implementation PurlockPanel {
    std::function<void()> onCancel_;
}

- (void)setOnCancel:(std::function<void()>)onCancel {
    onCancel_ = std::move(onCancel);
}

- (BOOL)canBecomeKeyWindow {
    return YES;
}

- (void)cancelOperation:(id)sender {
    if (onCancel_) onCancel_();
}

/// The menu's Close: a window without a close control refuses performClose:.
- (void)closePanel:(id)sender {
    if (onCancel_) onCancel_();
}

@end

namespace purlock::host_macos {

namespace {

static_assert(PanelStyle{}.styleMask ==
              (NSWindowStyleMaskNonactivatingPanel | NSWindowStyleMaskFullSizeContentView));
static_assert(PanelStyle{}.backing == NSBackingStoreBuffered);
static_assert(PanelStyle{}.level == NSPopUpMenuWindowLevel);
static_assert(PanelStyle{}.collectionBehavior ==
              (NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary));
static_assert(PanelStyle{}.material == NSVisualEffectMaterialPopover);
static_assert(PanelStyle{}.state == NSVisualEffectStateActive);
static_assert(PanelStyle{}.blendingMode == NSVisualEffectBlendingModeBehindWindow);

NSVisualEffectView* makeBackground(const PanelStyle& style) {
    const NSRect frame = NSMakeRect(0, 0, style.contentRect.width, style.contentRect.height);
    NSVisualEffectView* const background = [[NSVisualEffectView alloc] initWithFrame:frame];
    [background setMaterial:static_cast<NSVisualEffectMaterial>(style.material)];
    [background setState:static_cast<NSVisualEffectState>(style.state)];
    [background setBlendingMode:static_cast<NSVisualEffectBlendingMode>(style.blendingMode)];
    background.appearance = [NSAppearance appearanceNamed:NSAppearanceNameVibrantDark];
    return background;
}

PurlockPanel* makeWindow(const PanelStyle& style) {
    const Rect& rect = style.contentRect;
    PurlockPanel* const panel =
        [[PurlockPanel alloc] initWithContentRect:NSMakeRect(rect.x, rect.y, rect.width, rect.height)
                                        styleMask:static_cast<NSWindowStyleMask>(style.styleMask)
                                          backing:static_cast<NSBackingStoreType>(style.backing)
                                            defer:style.defersCreation];
    panel.title = @"Purlock";  // not shown; a screen reader says it
    [panel setTitlebarAppearsTransparent:style.titlebarAppearsTransparent];
    [panel setTitleVisibility:style.titleHidden ? NSWindowTitleHidden : NSWindowTitleVisible];
    [panel setMovableByWindowBackground:style.movableByWindowBackground];
    [panel setLevel:style.level];
    [panel setCollectionBehavior:static_cast<NSWindowCollectionBehavior>(style.collectionBehavior)];
    [panel setOpaque:style.opaque];
    if (style.clearBackground) [panel setBackgroundColor:NSColor.clearColor];
    [panel setHasShadow:style.hasShadow];
    [panel setHidesOnDeactivate:style.hidesOnDeactivate];
    [panel setReleasedWhenClosed:NO];  // its reference is ours, and ARC's
    return panel;
}

class Panel final : public PanelWindow {
  public:
    Panel(const PanelStyle& style, PanelWindowEvents events)
        : panel_(makeWindow(style)),
          background_(makeBackground(style)),
          onAction_(std::move(events.onAction)) {
        [panel_ setContentView:background_];
        [panel_ setOnCancel:std::move(events.onCancel)];
    }
    ~Panel() override { [panel_ orderOut:nil]; }

    void setContent(const View& content) override {
        if (content_ && content_->canShow(content)) {
            content_->show(content);
            return;
        }
        if (content_) [content_->view() removeFromSuperview];
        content_ = std::make_unique<DrawnView>(content, onAction_);
        NSView* const view = content_->view();
        [background_ addSubview:view];
        [NSLayoutConstraint activateConstraints:@[
            [view.topAnchor constraintEqualToAnchor:background_.topAnchor],
            [view.bottomAnchor constraintEqualToAnchor:background_.bottomAnchor],
            [view.leadingAnchor constraintEqualToAnchor:background_.leadingAnchor],
            [view.trailingAnchor constraintEqualToAnchor:background_.trailingAnchor],
        ]];
    }

    bool isVisible() const override { return [panel_ isVisible]; }

    Rect frame() const override {
        const NSRect frame = panel_.frame;
        return {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height};
    }

    void setFrameOrigin(Point origin) override { [panel_ setFrameOrigin:NSMakePoint(origin.x, origin.y)]; }
    void makeKeyAndOrderFront() override { [panel_ makeKeyAndOrderFront:nil]; }
    void orderOut() override { [panel_ orderOut:nil]; }

  private:
    PurlockPanel* const panel_;
    NSVisualEffectView* const background_;
    const std::function<void(const Action&)> onAction_;
    std::unique_ptr<DrawnView> content_;
};

}  // namespace

std::unique_ptr<PanelWindow> PanelWindowsOfAppKit::makePanel(const PanelStyle& style,
                                                             PanelWindowEvents events) {
    return std::make_unique<Panel>(style, std::move(events));
}

}  // namespace purlock::host_macos
