#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/linux/accessibility/snapshot.h"
#include "platform/linux/dbus/bus_address.h"
#include "platform/linux/dbus/bus_thread.h"
#include "source/accessibility_tree.h"

namespace purlock::host_linux {

/// Other applications' elements over AT-SPI.
///
/// The main thread never waits: a walk is answered from the snapshot that the walk before it asked for, and
/// asks for the next one. So the first walk over an application finds nothing, and later ones see it as it
/// was one walk earlier. A snapshot older than `oldestSnapshot` gives nothing: an application that hangs, or
/// has gone, loses its badge within that time. There is at most one read of an application's tree for each
/// walk, one under way at a time, and none within `pauseBetweenReads` of the last; nothing is read while
/// nobody walks.
///
/// Trusted means that the session has an accessibility bus and that accessibility is enabled there. Owned by
/// the host, which ends it before the bus thread.
class AtSpiTree final : public AccessibilityTree {
  public:
    static constexpr std::chrono::milliseconds oldestSnapshot{3000};
    static constexpr std::chrono::milliseconds pauseBetweenReads{250};

    explicit AtSpiTree(BusThread& thread, std::string busAddress = sessionBusAddress());
    ~AtSpiTree() override;

    bool isProcessTrusted() override;
    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t pid) override;

    /// Enables accessibility for the session: what the prompt for the permission leads to. Answers at once;
    /// `isProcessTrusted` tells when it has worked.
    void enable();

  private:
    using Moment = std::chrono::steady_clock::time_point;
    class Worker;
    struct Shelf;

    const std::shared_ptr<Shelf> shelf_;
    const std::unique_ptr<OnBusThread<Worker>> worker_;
};

}  // namespace purlock::host_linux
