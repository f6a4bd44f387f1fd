#pragma once

#include <compare>

namespace purlock {

struct OperatingSystemVersion {
    int major = 0;
    int minor = 0;
    int patch = 0;

    auto operator<=>(const OperatingSystemVersion&) const = default;
};

/// The operating system whose contracts the host keeps. Owned by the host; any thread.
class OperatingSystem {
  public:
    OperatingSystem() = default;
    virtual ~OperatingSystem() = default;
    OperatingSystem(const OperatingSystem&) = delete;
    OperatingSystem& operator=(const OperatingSystem&) = delete;

    virtual OperatingSystemVersion version() const = 0;
};

}  // namespace purlock
