#include "tour/panel_reader.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "tests/support/wait_until.h"

namespace purlock::tour {

namespace {

using Element = std::shared_ptr<AccessibilityElement>;
using Lines = std::vector<std::string>;

AccessibilityElements children(const Element& element) {
    auto value = element->copyAttributeValue("AXChildren");
    auto* elements = value ? std::get_if<AccessibilityElements>(&*value) : nullptr;
    return elements ? std::move(*elements) : AccessibilityElements{};
}

std::string name(const Element& element) {
    const auto value = element->copyAttributeValue("AXTitle");
    const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text ? *text : std::string();
}

bool isLeaf(const Element& element) {
    return children(element).empty();
}

void append(Lines& lines, const std::string& line) {
    if (!line.empty()) lines.push_back(line);
}

std::string joined(const AccessibilityElements& row) {
    std::string line;
    for (const Element& element : row) {
        const std::string words = name(element);
        if (!words.empty()) line += (line.empty() ? "" : "   ") + words;
    }
    return line;
}

void appendLines(const Element& element, Lines& lines) {
    const auto inside = children(element);
    if (inside.empty()) {
        append(lines, name(element));
    } else if (std::ranges::all_of(inside, isLeaf)) {
        append(lines, joined(inside));
    } else {
        for (const Element& child : inside) appendLines(child, lines);
    }
}

}  // namespace

PanelReader::PanelReader(const std::string& sessionBus) : tree_(thread_, sessionBus) {}

bool PanelReader::enable() {
    tree_.enable();
    return test::waitUntil([this] { return tree_.isProcessTrusted(); });
}

std::vector<std::string> PanelReader::lines(std::int32_t pid) {
    Lines lines;
    appendLines(tree_.createApplication(pid), lines);
    return lines;
}

}  // namespace purlock::tour
