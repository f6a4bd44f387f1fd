#include "ui/accessible_words.h"

#include <utility>

namespace purlock {

namespace {

bool isControl(const Content& content) {
    return std::holds_alternative<Button>(content) || std::holds_alternative<Switch>(content) ||
           std::holds_alternative<Menu>(content);
}

/// The words of a text, or those of what an element holds, in their order.
std::string wordsOn(const View& view) {
    if (const auto* text = std::get_if<Text>(&view.content)) return text->text;
    std::string words;
    for (const View& child : view.children) {
        const std::string more = accessibleWords(child).name;
        if (!words.empty() && !more.empty()) words += ", ";
        words += more;
    }
    return words;
}

}  // namespace

AccessibleWords accessibleWords(const View& view) {
    std::string words = wordsOn(view);
    if (words.empty()) words = view.help;
    if (isControl(view.content)) return {std::move(words), view.label};
    return {view.label.empty() ? words : view.label, {}};
}

}  // namespace purlock
