#include "platform/linux/accessibility/snapshot_element.h"

namespace purlock::host_linux {

namespace {

std::optional<AttributeValue> valueOf(const std::optional<std::string>& text) {
    return text ? std::optional<AttributeValue>(*text) : std::nullopt;
}

}  // namespace

std::optional<AttributeValue> SnapshotElement::copyAttributeValue(std::string_view attribute) {
    if (!snapshot_ || node_ >= snapshot_->nodes.size()) return std::nullopt;
    const SnapshotNode& node = snapshot_->nodes[node_];
    if (attribute == "AXValue") return valueOf(node.value);
    if (attribute == "AXTitle") return valueOf(node.title);
    if (attribute == "AXDescription") return valueOf(node.description);
    if (attribute == "AXChildren") return children(node);
    return std::nullopt;
}

AccessibilityElements SnapshotElement::children(const SnapshotNode& node) const {
    AccessibilityElements elements;
    elements.reserve(node.children.size());
    for (const std::uint32_t child : node.children) {
        elements.push_back(std::make_shared<SnapshotElement>(snapshot_, child));
    }
    return elements;
}

}  // namespace purlock::host_linux
