#pragma once

#include "base/operating_system.h"

namespace purlock::host_macos {

/// The version that the system tells this process. A process built with an old SDK may be told an older one.
class ProcessInfo final : public OperatingSystem {
  public:
    OperatingSystemVersion version() const override;
};

}  // namespace purlock::host_macos
