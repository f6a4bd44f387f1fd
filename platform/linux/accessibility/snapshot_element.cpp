#include "platform/linux/accessibility/snapshot_element.h"

namespace purlock::host_linux {

std::optional<AttributeValue> SnapshotElement::text(SnapshotText attribute) const {
    const auto& text = snapshot_->nodes[node_].text(attribute);
    record_->givenText = text ? std::optional(attribute) : std::nullopt;
    return text ? std::optional<AttributeValue>(*text) : std::nullopt;
}

std::optional<AttributeValue> SnapshotElement::copyAttributeValue(std::string_view attribute) {
    if (!snapshot_ || node_ >= snapshot_->nodes.size()) return std::nullopt;
    *record_ = {.node = node_, .givenText = std::nullopt, .isUsed = true};
    if (attribute == "AXValue") return text(SnapshotText::value);
    if (attribute == "AXTitle") return text(SnapshotText::title);
    if (attribute == "AXDescription") return text(SnapshotText::description);
    if (attribute == "AXChildren") return children(snapshot_->nodes[node_]);
    return std::nullopt;
}

AccessibilityElements SnapshotElement::children(const SnapshotNode& node) const {
    AccessibilityElements elements;
    elements.reserve(node.children.size());
    for (const std::uint32_t child : node.children) {
        elements.push_back(std::make_shared<SnapshotElement>(snapshot_, child, record_));
    }
    return elements;
}

}  // namespace purlock::host_linux
