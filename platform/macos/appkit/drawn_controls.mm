// What can be used: buttons, switches, menus.

#include <utility>
#include <vector>

#include "platform/macos/appkit/action_target.h"
#include "platform/macos/appkit/drawn_content.h"
#include "platform/macos/foundation/texts.h"
#include "ui/accessible_words.h"

/// A button without a border, whose face is the view that is put into it. It takes the clicks on that view,
/// and the first click too, while the panel is not the key window.
@interface PurlockButton : NSButton
@end

@implementation PurlockButton

- (NSView*)hitTest:(NSPoint)point {
    return [super hitTest:point] != nil ? self : nil;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
    return YES;
}

/// The face alone says how large it is: the button's own empty title would have a word in it.
- (NSSize)intrinsicContentSize {
    return NSSize{NSViewNoIntrinsicMetric, NSViewNoIntrinsicMetric};
}

@end

namespace purlock::host_macos {

namespace {

const NSRect nowhere = NSMakeRect(0, 0, 0, 0);

/// The face of a control: its one child, replaced when it cannot become the next.
class Face {
  public:
    Face(NSView* control, OnAction onAction) : control_(control), onAction_(std::move(onAction)) {}

    /// Returns the new view when there is one, which the caller puts in its place.
    NSView* show(const View& next) {
        if (next.children.empty()) return nil;
        const View& face = next.children.front();
        if (child_ && child_->canShow(face)) {
            child_->show(face);
            return nil;
        }
        if (child_) [child_->view() removeFromSuperview];
        child_ = std::make_unique<DrawnView>(face, onAction_);
        return child_->view();
    }

    void fill(const View& next) {
        NSView* const view = show(next);
        if (view == nil) return;
        [control_ addSubview:view];
        pinEdges(view, control_, {});
    }

  private:
    NSView* const control_;
    const OnAction onAction_;
    std::unique_ptr<DrawnView> child_;
};

PurlockButton* makeButton(PurlockActionTarget* target) {
    PurlockButton* const button = [[PurlockButton alloc] initWithFrame:nowhere];
    useConstraints(button);
    button.title = @"";
    button.bordered = NO;
    button.target = target;
    button.action = @selector(performAction:);
    return button;
}

class DrawnButton final : public DrawnContent {
  public:
    DrawnButton(const View& view, const OnAction& onAction)
        : target_([[PurlockActionTarget alloc]
              initWithBlock:[onAction, action = action_] { onAction(*action); }]),
          button_(makeButton(target_)),
          face_(button_, onAction) {
        show(view);
    }

    NSView* view() const override { return button_; }

    void show(const View& next) override {
        *action_ = std::get<Button>(next.content).action;
        [button_ setAccessibilityLabel:makeNSString(accessibleWords(next).name)];
        face_.fill(next);
    }

  private:
    const std::shared_ptr<Action> action_ = std::make_shared<Action>();
    PurlockActionTarget* const target_;
    PurlockButton* const button_;
    Face face_;
};

class DrawnSwitch final : public DrawnContent {
  public:
    DrawnSwitch(const View& view, const OnAction& onAction)
        : target_([[PurlockActionTarget alloc]
              initWithBlock:[onAction, action = action_] { onAction(*action); }]),
          face_(stack_, onAction) {
        useConstraints(stack_);
        stack_.orientation = NSUserInterfaceLayoutOrientationHorizontal;
        stack_.alignment = NSLayoutAttributeCenterY;
        stack_.spacing = gap;
        switch_.controlSize = NSControlSizeMini;
        switch_.target = target_;
        switch_.action = @selector(performAction:);
        [stack_ insertArrangedSubview:switch_ atIndex:0];
        show(view);
    }

    NSView* view() const override { return stack_; }

    void show(const View& next) override {
        const auto& content = std::get<Switch>(next.content);
        *action_ = content.action;
        // It has moved by itself when it was used; what counts is what came of it.
        switch_.state = content.isOn ? NSControlStateValueOn : NSControlStateValueOff;
        [switch_ setAccessibilityLabel:makeNSString(accessibleWords(next).name)];
        NSView* const label = face_.show(next);
        if (label != nil) [stack_ insertArrangedSubview:label atIndex:0];
    }

  private:
    static constexpr double gap = 6;

    const std::shared_ptr<Action> action_ = std::make_shared<Action>();
    PurlockActionTarget* const target_;
    NSSwitch* const switch_ = [[NSSwitch alloc] initWithFrame:nowhere];
    NSStackView* const stack_ = [[NSStackView alloc] initWithFrame:nowhere];
    Face face_;
};

using Entries = std::vector<MenuEntry>;

/// Opens the menu under the control and stays until it is closed; the targets of its items live as long.
void popUp(const Entries& entries, NSView* under, const OnAction& onAction) {
    constexpr double distance = 4;
    NSMenu* const menu = [NSMenu new];
    std::vector<PurlockActionTarget*> targets;
    for (const MenuEntry& entry : entries) {
        const auto* const item = std::get_if<MenuItem>(&entry);
        if (item == nullptr) {
            [menu addItem:[NSMenuItem separatorItem]];
            continue;
        }
        const Action action = item->action;
        targets.push_back(
            [[PurlockActionTarget alloc] initWithBlock:[onAction, action] { onAction(action); }]);
        NSMenuItem* const shown = [menu addItemWithTitle:makeNSString(item->title)
                                                  action:@selector(performAction:)
                                           keyEquivalent:@""];
        shown.target = targets.back();
    }
    // A button's own coordinates grow downwards.
    [menu popUpMenuPositioningItem:nil
                        atLocation:NSMakePoint(0, under.bounds.size.height + distance)
                            inView:under];
}

class DrawnMenu final : public DrawnContent {
  public:
    DrawnMenu(const View& view, const OnAction& onAction)
        : target_(targetThatOpens(onAction)), button_(makeButton(target_)), face_(button_, onAction) {
        *place_ = button_;
        [button_ setAccessibilityRole:NSAccessibilityPopUpButtonRole];
        show(view);
    }

    NSView* view() const override { return button_; }

    void show(const View& next) override {
        *entries_ = std::get<Menu>(next.content).entries;
        // The face shows the chosen device, which is the menu's value here.
        const AccessibleWords words = accessibleWords(next);
        [button_ setAccessibilityLabel:makeNSString(words.description)];
        [button_ setAccessibilityValue:makeNSString(words.name)];
        face_.fill(next);
    }

  private:
    PurlockActionTarget* targetThatOpens(const OnAction& onAction) const {
        return [[PurlockActionTarget alloc] initWithBlock:[onAction, entries = entries_, place = place_] {
            const Entries opened = *entries;  // the panel may be drawn anew while the menu is open
            NSView* const under = *place;
            if (under != nil) popUp(opened, under, onAction);
        }];
    }

    const std::shared_ptr<Entries> entries_ = std::make_shared<Entries>();
    const std::shared_ptr<NSView* __weak> place_ = std::make_shared<NSView * __weak>();
    PurlockActionTarget* const target_;
    PurlockButton* const button_;
    Face face_;
};

}  // namespace

std::unique_ptr<DrawnContent> drawnButton(const View& view, const OnAction& onAction) {
    return std::make_unique<DrawnButton>(view, onAction);
}

std::unique_ptr<DrawnContent> drawnSwitch(const View& view, const OnAction& onAction) {
    return std::make_unique<DrawnSwitch>(view, onAction);
}

std::unique_ptr<DrawnContent> drawnMenu(const View& view, const OnAction& onAction) {
    return std::make_unique<DrawnMenu>(view, onAction);
}

}  // namespace purlock::host_macos
