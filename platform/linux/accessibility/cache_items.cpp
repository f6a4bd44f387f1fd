#include "platform/linux/accessibility/cache_items.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

#include "platform/linux/accessibility/element_rules.h"

namespace purlock::host_linux {

namespace {

std::string textAt(const BusValue& item, std::size_t place) {
    const BusValue* value = item.at(place);
    return value != nullptr && value->text() != nullptr ? *value->text() : std::string();
}

/// The path of a reference (so), if it is to an object of that peer.
std::optional<std::string> pathOf(const BusValue* reference, std::string_view busName) {
    if (reference == nullptr || textAt(*reference, 0) != busName) return std::nullopt;
    std::string path = textAt(*reference, 1);
    return path.empty() ? std::nullopt : std::optional(std::move(path));
}

bool lists(const BusValue* values, std::string_view wanted) {
    if (values == nullptr || values->list() == nullptr) return false;
    return std::ranges::any_of(*values->list(), [&](const BusValue& value) {
        return value.text() != nullptr && *value.text() == wanted;
    });
}

class TreeBuilder {
  public:
    TreeBuilder(const std::vector<CacheItem>& items, const SnapshotLimits& limits)
        : items_(items), limits_(limits), texts_(limits), children_(items.size()), placed_(items.size()) {
        for (std::size_t i = 0; i < items.size(); ++i) places_.try_emplace(items[i].path, i);
        for (std::size_t i = 0; i < items.size(); ++i) linkItem(i);
        for (auto& children : children_) {
            std::ranges::stable_sort(children, {}, [&](std::size_t child) { return items_[child].index; });
        }
        // The older form gives the order itself.
        for (std::size_t i = 0; i < items.size(); ++i) listChildren(i);
    }

    std::optional<CachedTree> build() {
        const auto root = places_.find(applicationElementPath);
        if (root == places_.end() || children_[root->second].empty() || lacksElements()) return std::nullopt;
        std::vector<std::size_t> level{root->second};
        placed_[root->second] = true;
        add(root->second);
        std::uint32_t first = 0;  // the node of the level's first item
        for (int depth = 1; depth <= limits_.depth && !level.empty(); ++depth) {
            const auto next = static_cast<std::uint32_t>(tree_.snapshot.nodes.size());
            level = addChildren(level, first);
            first = next;
        }
        return std::move(tree_);
    }

  private:
    void linkItem(std::size_t item) {
        if (places_.at(items_[item].path) != item) return;  // listed before
        const auto parent = places_.find(items_[item].parentPath);
        if (parent != places_.end()) children_[parent->second].push_back(item);
    }

    void listChildren(std::size_t item) {
        if (items_[item].children.empty()) return;
        children_[item].clear();
        for (const std::string& path : items_[item].children) {
            const auto child = places_.find(path);
            if (child != places_.end()) children_[item].push_back(child->second);
        }
    }

    bool lacksElements() const {
        constexpr std::string_view bridgedPaths = "/org/a11y/atspi/accessible/";  // and the root of GTK 4
        for (std::size_t i = 0; i < items_.size(); ++i) {
            if (!items_[i].isVisible && items_[i].path != applicationElementPath) continue;
            if (items_[i].path.starts_with(bridgedPaths) || places_.at(items_[i].path) != i) continue;
            if (items_[i].childCount > static_cast<std::int64_t>(children_[i].size())) return true;
        }
        return false;
    }

    std::vector<std::size_t> addChildren(const std::vector<std::size_t>& level, std::uint32_t first) {
        std::vector<std::size_t> next;
        for (std::size_t i = 0; i < level.size(); ++i) {
            for (const std::size_t child : children_[level[i]]) {
                if (tree_.snapshot.nodes.size() >= limits_.elements) return next;
                if (placed_[child] || !items_[child].isVisible) continue;
                placed_[child] = true;
                const std::uint32_t node = add(child);  // first: it moves the nodes
                tree_.snapshot.nodes[first + i].children.push_back(node);
                next.push_back(child);
            }
        }
        return next;
    }

    std::uint32_t add(std::size_t place) {
        const CacheItem& item = items_[place];
        const auto node = static_cast<std::uint32_t>(tree_.snapshot.nodes.size());
        tree_.snapshot.nodes.push_back(
            {std::nullopt, texts_.take(&item.name), texts_.take(&item.description), {}, item.path});
        if (item.hasText && countsByContent(item.role, item.name.empty())) {
            tree_.textElements.push_back({node, item.path});
        }
        return node;
    }

    const std::vector<CacheItem>& items_;
    const SnapshotLimits limits_;
    TextBudget texts_;
    std::unordered_map<std::string_view, std::size_t> places_;
    std::vector<std::vector<std::size_t>> children_;
    std::vector<bool> placed_;
    CachedTree tree_;
};

}  // namespace

std::optional<CacheItem> parseCacheItem(const BusValue& item, std::string_view busName) {
    auto path = pathOf(item.at(0), busName);
    const BusValue* place = item.at(3);
    if (!path || place == nullptr) return std::nullopt;
    CacheItem result;
    result.path = std::move(*path);
    result.parentPath = pathOf(item.at(2), busName).value_or("");
    std::size_t interfaces = 4;
    if (const auto index = place->integer()) {
        result.index = *index;
        const BusValue* count = item.at(4);
        if (count != nullptr) result.childCount = count->integer().value_or(0);
        interfaces = 5;
    } else if (const BusValue::List* children = place->list()) {
        for (const BusValue& child : *children) {
            if (auto childPath = pathOf(&child, busName)) result.children.push_back(std::move(*childPath));
        }
    } else {
        return std::nullopt;
    }
    result.hasText = lists(item.at(interfaces), textInterface);
    result.name = textAt(item, interfaces + 1);
    result.description = textAt(item, interfaces + 3);
    const BusValue* role = item.at(interfaces + 2);
    if (role != nullptr) result.role = role->integer().value_or(0);
    result.isVisible = isOnScreen(item.at(interfaces + 4));
    return result;
}

std::optional<CachedTree> buildTree(const std::vector<CacheItem>& items, const SnapshotLimits& limits) {
    return TreeBuilder(items, limits).build();
}

}  // namespace purlock::host_linux
