#pragma once

#include <AppKit/AppKit.h>

#include <optional>
#include <string>
#include <vector>

#include "ui/view.h"

// What a test asks of the stand-ins of AppKit that the real classes have no public answer for, and what it
// does in the user's place. For Objective-C++ files.

namespace purlock::standins {

Color componentsOf(NSColor* color);

struct FontFacts {
    double size = 0;
    double weight = 0;
    bool isItalic = false;
    bool operator==(const FontFacts&) const = default;
};
FontFacts factsOf(NSFont* font);

struct SymbolFacts {
    std::string name;
    std::string description;
    double pointSize = 0;
    double weight = 0;
    bool isTemplate = true;
    bool operator==(const SymbolFacts&) const = default;
};
SymbolFacts factsOf(NSImage* image);

std::vector<NSView*> subviewsOf(NSView* view);
/// All views of this class in and below `view`, in the order in which they are drawn.
std::vector<NSView*> viewsOfClass(NSView* view, Class type);
NSString* accessibilityLabelOf(NSView* view);

/// What was said of the view's wish to keep its size: "hugging horizontal 750", in order.
std::vector<std::string> prioritiesOf(NSView* view);

struct AccessibilityFacts {
    bool isElement = false;
    std::string label;
    std::string role;
    std::string value;
    bool operator==(const AccessibilityFacts&) const = default;
};
AccessibilityFacts accessibilityOf(NSView* view);

/// The items of a menu and of those in it that do something: "Quit q terminate:".
std::vector<std::string> keysOf(NSMenu* menu);
/// Presses Command and a key: the first of the responders that has the item's method gets it.
void pressKey(NSMenu* menu, const std::string& key, const std::vector<id>& responders);

/// Uses the control: it sends its action.
void click(NSControl* control);

/// The one panel that there is, the status items in the bar.
NSPanel* panel();
std::vector<NSStatusItem*> itemsInBar();

/// A click that another program gets.
void clickOutside();
bool hasEventMonitor();

/// The titles of the menu that was opened last ("-" is a separator), and what the user chooses in the next
/// one.
std::vector<std::string> lastMenu();
void chooseInNextMenu(const std::string& title);

/// What activated constraints say, each as "top = top", "width = 360" or "trailing <= trailing".
std::vector<std::string> takeConstraints();

/// The same with both views: first.firstAttribute (= or <=) second.secondAttribute + constant.
struct ConstraintFacts {
    const void* first = nullptr;
    std::string firstAttribute;
    bool isEqual = true;
    const void* second = nullptr;  // null: a constant alone
    std::string secondAttribute;
    double constant = 0;
};
/// Those that were activated since the last `takeConstraints`, the given views among them.
std::vector<ConstraintFacts> constraintsBetween(NSView* one, NSView* other);

}  // namespace purlock::standins
