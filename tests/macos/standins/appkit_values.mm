// AppKit's values: colours, fonts, images, paths, anchors.

#include <QuartzCore/QuartzCore.h>

#include "tests/macos/standins/inspection.h"
#include "tests/macos/standins/values.h"

#pragma clang diagnostic ignored "-Wincomplete-implementation"

using namespace purlock::standins;

namespace {

std::vector<std::pair<std::string, ConstraintFacts>> activated;

std::string numberText(double number) {
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

}  // namespace

@interface NSColor () {
  @public
    purlock::Color components_;
}
@end

@implementation NSColor
+ (NSColor*)clearColor {
    return [self colorWithSRGBRed:0 green:0 blue:0 alpha:0];
}
+ (NSColor*)colorWithSRGBRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha {
    NSColor* const color = [NSColor new];
    color->components_ = {red, green, blue, alpha};
    return color;
}
- (id)copy {
    return self;
}
- (void)setFill {
    World::current().note("setFill");
}
- (void)setStroke {
    World::current().note("setStroke");
}
@end

const NSFontWeight NSFontWeightRegular = 0;
const NSFontWeight NSFontWeightMedium = 0.23;
const NSFontWeight NSFontWeightSemibold = 0.3;
const NSFontWeight NSFontWeightBold = 0.4;

@interface NSFontDescriptor () {
  @public
    FontFacts facts_;
}
@end

@implementation NSFontDescriptor
- (NSFontDescriptor*)fontDescriptorWithSymbolicTraits:(NSFontDescriptorSymbolicTraits)traits {
    NSFontDescriptor* const descriptor = [NSFontDescriptor new];
    descriptor->facts_ = facts_;
    descriptor->facts_.isItalic = (traits & NSFontDescriptorTraitItalic) != 0;
    return descriptor;
}
@end

@interface NSFont () {
  @public
    FontFacts facts_;
}
@end

@implementation NSFont
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
    NSFont* const font = [NSFont new];
    font->facts_ = {size, weight, false};
    return font;
}
+ (NSFont*)fontWithDescriptor:(NSFontDescriptor*)descriptor size:(CGFloat)size {
    NSFont* const font = [NSFont new];
    font->facts_ = descriptor->facts_;
    font->facts_.size = size;
    return font;
}
- (NSFontDescriptor*)fontDescriptor {
    NSFontDescriptor* const descriptor = [NSFontDescriptor new];
    descriptor->facts_ = facts_;
    return descriptor;
}
@end

@interface NSImageSymbolConfiguration () {
  @public
    double pointSize_;
    double weight_;
}
@end

@implementation NSImageSymbolConfiguration
+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight {
    NSImageSymbolConfiguration* const made = [NSImageSymbolConfiguration new];
    made->pointSize_ = pointSize;
    made->weight_ = weight;
    return made;
}
@end

@interface NSImage () {
  @public
    SymbolFacts facts_;
}
@end

@implementation NSImage
+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description {
    if (World::current().hasNoSymbols) return nil;
    NSImage* const image = [NSImage new];
    image->facts_.name = utf8(name);
    image->facts_.description = utf8(description);
    return image;
}
- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration {
    NSImage* const image = [NSImage new];
    image->facts_ = facts_;
    image->facts_.pointSize = configuration->pointSize_;
    image->facts_.weight = configuration->weight_;
    return image;
}
- (void)setTemplate:(BOOL)isTemplate {
    facts_.isTemplate = isTemplate;
}
@end

@implementation NSBezierPath
+ (NSBezierPath*)bezierPathWithRect:(NSRect)rect {
    World::current().note("rectangle");
    return [NSBezierPath new];
}
+ (NSBezierPath*)bezierPathWithOvalInRect:(NSRect)rect {
    World::current().note("oval " + numberText(rect.origin.x) + " " + numberText(rect.size.width));
    return [NSBezierPath new];
}
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect xRadius:(CGFloat)xRadius yRadius:(CGFloat)yRadius {
    World::current().note("rounded rectangle " + numberText(xRadius));
    return [NSBezierPath new];
}
- (void)fill {
    World::current().note("fill");
}
- (void)stroke {
    World::current().note("stroke " + numberText(self.lineWidth));
}
@end

const NSAppearanceName NSAppearanceNameVibrantDark = @"NSAppearanceNameVibrantDark";

@implementation NSAppearance
+ (NSAppearance*)appearanceNamed:(NSAppearanceName)name {
    World::current().note("appearanceNamed: " + utf8(name));
    return [NSAppearance new];
}
@end

// Constraints are sentences, and the views that they are about.

@interface NSLayoutAnchor () {
  @public
    std::string name_;
    const void* view_;
}
@end

@interface NSLayoutConstraint () {
  @public
    std::string sentence_;
    ConstraintFacts facts_;
}
@end

@implementation NSLayoutConstraint
+ (void)activateConstraints:(NSArray<NSLayoutConstraint*>*)constraints {
    for (NSLayoutConstraint* constraint in constraints) {
        activated.emplace_back(constraint->sentence_, constraint->facts_);
    }
}
@end

static NSLayoutConstraint* constraint(NSLayoutAnchor* first, bool isEqual, NSLayoutAnchor* second,
                                      double constant) {
    NSLayoutConstraint* const made = [NSLayoutConstraint new];
    made->facts_ = {first->view_, first->name_, isEqual, nullptr, "", constant};
    made->sentence_ = first->name_ + (isEqual ? " = " : " <= ");
    if (second == nil) {
        made->sentence_ += numberText(constant);
        return made;
    }
    made->facts_.second = second->view_;
    made->facts_.secondAttribute = second->name_;
    made->sentence_ += second->name_ + (constant == 0 ? "" : " + " + numberText(constant));
    return made;
}

@implementation NSLayoutAnchor
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)anchor {
    return constraint(self, true, anchor, 0);
}
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)anchor constant:(CGFloat)c {
    return constraint(self, true, anchor, c);
}
- (NSLayoutConstraint*)constraintLessThanOrEqualToAnchor:(NSLayoutAnchor*)anchor {
    return constraint(self, false, anchor, 0);
}
@end
@implementation NSLayoutXAxisAnchor
@end
@implementation NSLayoutYAxisAnchor
@end
@implementation NSLayoutDimension
- (NSLayoutConstraint*)constraintEqualToConstant:(CGFloat)c {
    return constraint(self, true, nil, c);
}
@end

const CAMediaTimingFunctionName kCAMediaTimingFunctionEaseOut = @"easeOut";

@interface CAMediaTimingFunction () {
  @public
    std::string name_;
}
@end

@implementation CAMediaTimingFunction
+ (instancetype)functionWithName:(CAMediaTimingFunctionName)name {
    CAMediaTimingFunction* const made = [CAMediaTimingFunction new];
    made->name_ = utf8(name);
    return made;
}
@end

@implementation NSAnimationContext
+ (void)runAnimationGroup:(void (^)(NSAnimationContext*))changes {
    NSAnimationContext* const context = [NSAnimationContext new];
    changes(context);
    World::current().note("animated " + numberText(context.duration) + " " + context.timingFunction->name_);
}
@end

namespace purlock::standins {

Color componentsOf(NSColor* color) {
    return color->components_;
}

FontFacts factsOf(NSFont* font) {
    return font->facts_;
}

SymbolFacts factsOf(NSImage* image) {
    return image == nil ? SymbolFacts{} : image->facts_;
}

std::vector<std::string> takeConstraints() {
    std::vector<std::string> sentences;
    for (const auto& [sentence, facts] : std::exchange(activated, {})) sentences.push_back(sentence);
    return sentences;
}

std::vector<ConstraintFacts> constraintsBetween(NSView* one, NSView* other) {
    const void* const a = (__bridge void*)one;
    const void* const b = (__bridge void*)other;
    std::vector<ConstraintFacts> found;
    for (const auto& [sentence, facts] : activated) {
        if ((facts.first == a && facts.second == b) || (facts.first == b && facts.second == a)) {
            found.push_back(facts);
        }
    }
    return found;
}

NSLayoutAnchor* anchorNamed(Class type, const std::string& name, NSView* view) {
    NSLayoutAnchor* const anchor = [[type alloc] init];
    anchor->name_ = name;
    anchor->view_ = (__bridge void*)view;
    return anchor;
}

}  // namespace purlock::standins
