#include "platform/macos/appkit/colors.h"

#include "platform/macos/foundation/texts.h"

namespace purlock::host_macos {

NSColor* colorOf(const Color& color) {
    return [NSColor colorWithSRGBRed:color.red green:color.green blue:color.blue alpha:color.opacity];
}

NSFontWeight weightOf(FontWeight weight) {
    switch (weight) {
        case FontWeight::regular:
            return NSFontWeightRegular;
        case FontWeight::medium:
            return NSFontWeightMedium;
        case FontWeight::semibold:
            return NSFontWeightSemibold;
        case FontWeight::bold:
            return NSFontWeightBold;
    }
    return NSFontWeightRegular;
}

NSFont* fontOf(const Font& font) {
    NSFont* const upright = [NSFont systemFontOfSize:font.size weight:weightOf(font.weight)];
    if (font.slant == FontSlant::upright) return upright;
    NSFontDescriptor* const slanted =
        [upright.fontDescriptor fontDescriptorWithSymbolicTraits:NSFontDescriptorTraitItalic];
    NSFont* const italic = [NSFont fontWithDescriptor:slanted size:font.size];
    return italic != nil ? italic : upright;
}

NSImage* symbolNamed(const std::string& name, NSString* description, double pointSize, FontWeight weight) {
    NSImageSymbolConfiguration* const configuration =
        [NSImageSymbolConfiguration configurationWithPointSize:pointSize weight:weightOf(weight)];
    NSImage* const image = [NSImage imageWithSystemSymbolName:makeNSString(name)
                                     accessibilityDescription:description];
    return [image imageWithSymbolConfiguration:configuration];
}

}  // namespace purlock::host_macos
