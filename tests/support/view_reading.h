#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "ui/view.h"

namespace purlock {

inline void PrintTo(const Color& color, std::ostream* out) {
    *out << color.red << ' ' << color.green << ' ' << color.blue << " at " << color.opacity;
}

}  // namespace purlock

namespace purlock::test {

// Reading a view tree as a person does: from top to bottom, from the leading edge on.

inline void visit(const View& view, const std::function<void(const View&)>& visitor) {
    visitor(view);
    for (const View& child : view.children) visit(child, visitor);
}

/// Every element whose content is of that kind.
template <typename Kind>
std::vector<const View*> elementsOf(const View& view) {
    std::vector<const View*> found;
    visit(view, [&found](const View& element) {
        if (std::holds_alternative<Kind>(element.content)) found.push_back(&element);
    });
    return found;
}

template <typename Kind>
const Kind& contentOf(const View& view) {
    return std::get<Kind>(view.content);
}

inline std::vector<std::string> textsOf(const View& view) {
    std::vector<std::string> texts;
    for (const View* element : elementsOf<Text>(view)) texts.push_back(contentOf<Text>(*element).text);
    return texts;
}

/// The first text that reads so; null when there is none.
inline const Text* textReading(const View& view, std::string_view words) {
    for (const View* element : elementsOf<Text>(view)) {
        if (contentOf<Text>(*element).text == words) return &contentOf<Text>(*element);
    }
    return nullptr;
}

/// The first element with that id, wherever it stands; null when there is none.
inline const View* elementWithID(const View& view, std::string_view id) {
    const View* found = nullptr;
    visit(view, [&](const View& element) {
        if (!found && element.id == id) found = &element;
    });
    return found;
}

/// The first symbol of that name; null when there is none.
inline const Symbol* symbolNamed(const View& view, std::string_view name) {
    for (const View* element : elementsOf<Symbol>(view)) {
        if (contentOf<Symbol>(*element).name == name) return &contentOf<Symbol>(*element);
    }
    return nullptr;
}

}  // namespace purlock::test
