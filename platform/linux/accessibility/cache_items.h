#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/accessibility/snapshot.h"
#include "platform/linux/dbus/bus_value.h"

namespace purlock::host_linux {

/// Where an application's own element is on its connection (at-spi2-core, atspi-constants.h).
inline constexpr std::string_view applicationElementPath = "/org/a11y/atspi/accessible/root";

/// One element as org.a11y.atspi.Cache.GetItems lists it, of those fields that the snapshot needs.
struct CacheItem {
    std::string path;
    std::string parentPath;
    std::int64_t index = 0;             // among its parent's children
    std::vector<std::string> children;  // in the older form, which lists them instead of the index
    std::string name;
    std::string description;
    bool hasText = false;         // implements org.a11y.atspi.Text
    bool isVisible = false;       // its states hold VISIBLE or SHOWING
    std::int64_t childCount = 0;  // as the newer form tells it
    std::int64_t role = 0;

    bool operator==(const CacheItem&) const = default;
};

/// Reads one item in either form that is in use: ((so)(so)(so)iiassusau), object, application, parent, index,
/// number of children, interfaces, name, role, description, states; and the older ((so)(so)(so)a(so)assusau),
/// with the list of children in the place of the two numbers. Absent when it is malformed or belongs to
/// another peer than `busName`. Pure; any thread.
std::optional<CacheItem> parseCacheItem(const BusValue& item, std::string_view busName);

/// An element whose content has to be asked for: its place in the snapshot and its path.
struct TextElement {
    std::uint32_t node = 0;
    std::string path;

    bool operator==(const TextElement&) const = default;
};

struct CachedTree {
    Snapshot snapshot;
    std::vector<TextElement> textElements;  // whose content counts
};

/// The tree below the application's element, breadth first: children in order, each element once at its first
/// place, and without what is not on the screen. Absent when the items hold no application
/// with children, or when GTK 4 has left some out: it lists only what somebody has asked for by its parent.
/// The bridge of GTK 3 lists everything but what it counts without having it as an element, such as the cells
/// of tables. Pure; any thread.
std::optional<CachedTree> buildTree(const std::vector<CacheItem>& items, const SnapshotLimits& limits);

}  // namespace purlock::host_linux
