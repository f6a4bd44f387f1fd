#pragma once

#include <string>

#include "base/clock.h"

namespace purlock {

/// `time` as an ISO 8601 internet date-time in UTC, cut to whole seconds: "2026-11-15T23:06:17Z".
std::string iso8601Text(WallTime time);

}  // namespace purlock
