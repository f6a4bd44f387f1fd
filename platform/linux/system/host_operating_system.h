#pragma once

#include "base/operating_system.h"

namespace purlock::host_linux {

/// The version of the contracts that this host keeps, not that of the kernel or the distribution.
///
/// The portable code asks for the version to learn what the platform's calls do. This host offers per-process
/// audio objects, which came with 14.2, and now-playing entry points that answer any caller, which ended
/// with 15.4: so it speaks for 15.3, the newest version of which both are true. Owned by the host; any
/// thread.
class HostOperatingSystem final : public OperatingSystem {
  public:
    OperatingSystemVersion version() const override { return {15, 3, 0}; }
};

}  // namespace purlock::host_linux
