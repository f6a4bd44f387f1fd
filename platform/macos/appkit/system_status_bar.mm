#include "platform/macos/appkit/system_status_bar.h"

#include <AppKit/AppKit.h>

#include <optional>
#include <utility>

#include "platform/macos/appkit/action_target.h"
#include "platform/macos/appkit/colors.h"
#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

namespace {

class ItemButton final : public StatusButton {
  public:
    explicit ItemButton(NSStatusBarButton* button) : button_(button) {
        [button setAccessibilityLabel:@"Purlock"];
    }

    void setImage(const SymbolImage& symbol) override {
        if (std::exchange(symbol_, symbol) == symbol) return;  // setting an image draws the bar anew
        NSImage* const image = symbolNamed(symbol.name, makeNSString(symbol.accessibilityDescription),
                                           symbol.pointSize, symbol.weight);
        // Set either way: a symbol is a template unless it is told otherwise.
        [image setTemplate:symbol.isTemplate()];
        button_.image = image;
    }

    void setAction(std::function<void()> onClick) override {
        target_ = [[PurlockActionTarget alloc] initWithBlock:std::move(onClick)];
        button_.target = target_;
        button_.action = @selector(performAction:);
    }

    void setToolTip(const std::string& text) override {
        // A tool tip that is set anew begins its wait anew: set every 0.8 s, it would never show.
        if (std::exchange(toolTip_, text) == text) return;
        button_.toolTip = makeNSString(text);
        [button_ setAccessibilityLabel:makeNSString(text)];
    }

    Rect windowFrame() const override {
        NSWindow* const window = button_.window;
        if (window == nil) return {};
        const NSRect frame = window.frame;
        return {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height};
    }

  private:
    NSStatusBarButton* const button_;
    PurlockActionTarget* target_ = nil;
    std::optional<SymbolImage> symbol_;  // as last set
    std::optional<std::string> toolTip_;
};

class BarItem final : public StatusItem {
  public:
    explicit BarItem(NSStatusItem* item) : item_(item) {
        if (item.button != nil) button_ = std::make_unique<ItemButton>(item.button);
    }
    ~BarItem() override { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }

    StatusButton* button() override { return button_.get(); }

  private:
    NSStatusItem* const item_;  // gone from the bar as soon as nobody keeps it
    std::unique_ptr<ItemButton> button_;
};

}  // namespace

std::unique_ptr<StatusItem> SystemStatusBar::statusItemWithLength(double length) {
    NSStatusItem* const item = [NSStatusBar.systemStatusBar
        statusItemWithLength:length == variableLength ? NSVariableStatusItemLength : length];
    if (item == nil) return nullptr;
    return std::make_unique<BarItem>(item);
}

}  // namespace purlock::host_macos
