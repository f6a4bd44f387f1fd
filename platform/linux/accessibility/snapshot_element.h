#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "platform/linux/accessibility/snapshot.h"
#include "source/accessibility_tree.h"

namespace purlock::host_linux {

/// A view of one element of a snapshot, which it keeps alive; good after the application is gone.
///
/// AXTitle is the accessible name and AXDescription the description. AXValue is the content: of an element
/// with text but without a name, and of fields, which a name only labels. Where a toolkit gives a text both
/// ways, as for a label, it is its AXTitle. A number (a slider's position) is no text and not kept. AXHelp is
/// always absent: AT-SPI has no such text in the versions in use. Texts are absent when empty.
class SnapshotElement final : public AccessibilityElement {
  public:
    /// Without a snapshot, every attribute is absent.
    SnapshotElement(std::shared_ptr<const Snapshot> snapshot, std::uint32_t node,
                    std::shared_ptr<WalkRecord> record = std::make_shared<WalkRecord>())
        : snapshot_(std::move(snapshot)), node_(node), record_(std::move(record)) {}

    std::optional<AttributeValue> copyAttributeValue(std::string_view attribute) override;

  private:
    std::optional<AttributeValue> text(SnapshotText attribute) const;
    AccessibilityElements children(const SnapshotNode& node) const;

    const std::shared_ptr<const Snapshot> snapshot_;
    const std::uint32_t node_;
    const std::shared_ptr<WalkRecord> record_;
};

}  // namespace purlock::host_linux
