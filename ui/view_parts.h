#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "ui/view.h"

namespace purlock {

// Short names for building view trees, and the colours that the whole panel shares. Pure; any thread.

inline constexpr Color accentGreen{0.3, 0.78, 0.45, 1};
inline constexpr Color accentAmber{0.95, 0.75, 0.2, 1};
inline constexpr Color accentRed{0.92, 0.3, 0.3, 1};

/// Between the elements of a row or column that asks for no distance of its own.
inline constexpr double defaultSpacing = 8;

inline View element(Content content) {
    View view;
    view.content = std::move(content);
    return view;
}

inline View container(Content content, std::vector<View> children) {
    View view = element(std::move(content));
    view.children = std::move(children);
    return view;
}

inline View row(double spacing, std::vector<View> children) {
    return container(Row{spacing}, std::move(children));
}

inline View column(double spacing, std::vector<View> children) {
    return container(Column{spacing}, std::move(children));
}

inline View line(std::string text, const Font& font, const Color& color) {
    return element(Text{std::move(text), font, color, Lines::one});
}

/// A caption in capitals, which a screen reader might spell: it is told the words as they are.
inline View captionLine(const std::string& words, const Color& color) {
    View caption = line(uppercased(words), {10, FontWeight::semibold}, color);
    caption.label = words;
    return caption;
}

inline View paragraph(std::string text, const Font& font, const Color& color) {
    return element(Text{std::move(text), font, color, Lines::asNeeded});
}

inline View symbol(std::string name, const Font& font, const Color& color) {
    return element(Symbol{std::move(name), font, color});
}

inline View disc(double diameter, const Color& color) {
    return element(Circle{diameter, color, {}, 1, {}});
}

inline View ring(double diameter, const Color& color, double lineWidth) {
    return element(Circle{diameter, {}, Stroke{color, lineWidth}, 1, {}});
}

inline View space(double width, double height) {
    return element(Space{width, height});
}

inline View flexibleSpace() {
    return element(FlexibleSpace{});
}

/// The rounded ground on which cards, the banner, findings and the picker stand.
inline View onCard(View view, const Padding& padding, double opacity) {
    view.padding = padding;
    view.background = Background{white(opacity), 6};
    return view;
}

}  // namespace purlock
