#pragma once

#include "base/operating_system.h"

namespace purlock::test {

/// An operating system of the version that a test says.
class FakeOperatingSystem final : public OperatingSystem {
  public:
    explicit FakeOperatingSystem(OperatingSystemVersion version = {15, 3, 0}) : version_(version) {}

    OperatingSystemVersion version() const override { return version_; }

  private:
    const OperatingSystemVersion version_;
};

}  // namespace purlock::test
