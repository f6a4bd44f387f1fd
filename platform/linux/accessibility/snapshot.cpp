#include "platform/linux/accessibility/snapshot.h"

#include <algorithm>
#include <utility>

namespace purlock::host_linux {

const std::optional<std::string>& SnapshotNode::text(SnapshotText attribute) const {
    switch (attribute) {
        case SnapshotText::value:
            return value;
        case SnapshotText::title:
            return title;
        case SnapshotText::description:
            break;
    }
    return description;
}

std::optional<FoundElement> foundElement(const Snapshot& snapshot, const WalkRecord& record) {
    if (!record.isUsed || !record.givenText || record.node >= snapshot.nodes.size()) return std::nullopt;
    const SnapshotNode& node = snapshot.nodes[record.node];
    const auto& text = node.text(*record.givenText);
    if (!text || node.path.empty()) return std::nullopt;
    return FoundElement{node.path, *record.givenText, *text};
}

Snapshot pathTo(const Snapshot& snapshot, std::uint32_t node) {
    std::vector<std::uint32_t> places{node};
    for (std::uint32_t place = node; place-- > 0;) {
        const auto& children = snapshot.nodes[place].children;
        if (std::ranges::find(children, places.back()) != children.end()) places.push_back(place);
    }
    Snapshot path;
    for (auto place = places.rbegin(); place != places.rend(); ++place) {
        path.nodes.push_back(snapshot.nodes[*place]);
        path.nodes.back().children.clear();
        if (path.nodes.size() > 1) {
            path.nodes[path.nodes.size() - 2].children = {static_cast<std::uint32_t>(path.nodes.size() - 1)};
        }
    }
    return path;
}

std::optional<std::string> TextBudget::take(const std::string* text) {
    if (text == nullptr || text->empty() || text->size() > limits_.textBytes || text->size() > left_) {
        return std::nullopt;
    }
    left_ -= text->size();
    return *text;
}

}  // namespace purlock::host_linux
