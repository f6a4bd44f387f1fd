#pragma once

#include <AppKit/AppKit.h>

#include "ui/view.h"

namespace purlock::host_macos {

// The panel's colours and fonts as AppKit's. For Objective-C++ files; main thread.

NSColor* colorOf(const Color& color);
NSFontWeight weightOf(FontWeight weight);
NSFont* fontOf(const Font& font);

/// A system symbol as large as a text of that size, in the colour of the view that shows it; nil when the
/// system has none of this name.
NSImage* symbolNamed(const std::string& name, NSString* description, double pointSize, FontWeight weight);

}  // namespace purlock::host_macos
