#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/accessibility/kept_trees.h"
#include "platform/linux/dbus/bus_address.h"
#include "platform/linux/dbus/bus_thread.h"
#include "source/accessibility_tree.h"

namespace purlock::host_linux {

/// Other applications' elements over AT-SPI.
///
/// The main thread never waits: a walk is answered from what was read before, and the first walk over an
/// application finds nothing. Reading a large tree costs its application as much as this program, so it is
/// read rarely (`ReadingPace`): when something has changed, then now and then. While no sound runs it is not
/// read, and the last answer stays. The element in which a walk has found something is asked before the tree
/// is read; it and the elements above it are all that is kept. An application that does not answer when it is
/// asked, or has left the bus, gives nothing.
///
/// Trusted means that the session has an accessibility bus and that accessibility is enabled there. Owned by
/// the host, which ends it before the bus thread; main thread.
class AtSpiTree final : public AccessibilityTree {
  public:
    /// `soundRuns` says whether any program produces sound; asked at walks, on the main thread.
    explicit AtSpiTree(BusThread& thread, std::string busAddress = sessionBusAddress(),
                       std::function<bool()> soundRuns = {}, const ReadingPace& pace = {});
    ~AtSpiTree() override;

    bool isProcessTrusted() override;
    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t pid) override;

    /// Another track or player plays now, so windows show something else.
    void noteChange();

    /// Enables accessibility for the session: what the prompt for the permission leads to. Answers at once;
    /// `isProcessTrusted` tells when it has worked.
    void enable();

  private:
    class Reader;
    struct Shared;

    const std::function<bool()> soundRuns_;
    const std::shared_ptr<Shared> shared_;
    const std::unique_ptr<OnBusThread<Reader>> reader_;
};

}  // namespace purlock::host_linux
