#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace purlock::host_linux {

/// What is kept of one application's tree at most. A walk over all of it has to fit between two frames.
struct SnapshotLimits {
    std::size_t elements = 25'000;
    std::size_t textBytes = 2048;                  // of one text; a longer one is no badge, and is absent
    std::size_t totalTextBytes = 2 * 1024 * 1024;  // then further texts are absent
    int depth = 12;                                // below the application, which is where the walk ends
};

/// One element: its texts, and its children by their places in the snapshot.
struct SnapshotNode {
    std::optional<std::string> value;
    std::optional<std::string> title;
    std::optional<std::string> description;
    std::vector<std::uint32_t> children;

    bool operator==(const SnapshotNode&) const = default;
};

/// An application's tree as it was at one moment; never changed after it was built. The first node is the
/// application.
struct Snapshot {
    std::vector<SnapshotNode> nodes;

    bool operator==(const Snapshot&) const = default;
};

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
