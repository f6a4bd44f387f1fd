#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace purlock::host_linux {

/// The limits of what is kept of one application's tree. A walk over all of it has to fit between two frames.
struct SnapshotLimits {
    std::size_t elements = 25'000;
    std::size_t textBytes = 2048;                  // of one text; a longer one is no badge, and is absent
    std::size_t totalTextBytes = 2 * 1024 * 1024;  // then further texts are absent
    int depth = 12;                                // below the application, which is where the walk ends
};

/// The texts of an element, in the order in which a walk asks for them.
enum class SnapshotText { value, title, description };

/// One element: its texts, and its children by their places in the snapshot.
struct SnapshotNode {
    std::optional<std::string> value;
    std::optional<std::string> title;
    std::optional<std::string> description;
    std::vector<std::uint32_t> children;
    std::string path{};  // of the element on its application's connection

    const std::optional<std::string>& text(SnapshotText attribute) const;
    bool operator==(const SnapshotNode&) const = default;
};

/// An application's tree as it was at one moment; never changed after it was built. The first node is the
/// application; every node comes after its parent.
struct Snapshot {
    std::vector<SnapshotNode> nodes;

    bool operator==(const Snapshot&) const = default;
};

/// The last question of a walk over a snapshot, which shows where the walk ended. Main thread only.
struct WalkRecord {
    std::uint32_t node = 0;
    std::optional<SnapshotText> givenText;  // the last question's answer was this text
    bool isUsed = false;
};

/// The element in which a walk found what it looked for: after a text that matches it asks nothing further,
/// and where nothing matches it ends with a question for children.
struct FoundElement {
    std::string path;
    SnapshotText attribute = SnapshotText::title;
    std::string text;

    bool operator==(const FoundElement&) const = default;
};
std::optional<FoundElement> foundElement(const Snapshot& snapshot, const WalkRecord& record);

/// The node and those above it alone: a walk over them finds what it found in the whole snapshot.
Snapshot pathTo(const Snapshot& snapshot, std::uint32_t node);

/// Takes texts for a snapshot within its limits. Pure; one for each snapshot that is built.
class TextBudget {
  public:
    explicit TextBudget(const SnapshotLimits& limits) : limits_(limits), left_(limits.totalTextBytes) {}

    /// The text; absent when it is empty, too long, or more than is left.
    std::optional<std::string> take(const std::string* text);

  private:
    const SnapshotLimits limits_;
    std::size_t left_;
};

}  // namespace purlock::host_linux
