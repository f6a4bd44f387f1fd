#pragma once

#include <optional>
#include <string_view>

#include "core/source_claim.h"

namespace purlock {

/// The known application with exactly this bundle identifier (letter case counts); `other` for any other one,
/// and for none. Pure; any thread.
SourceApp sourceAppFromBundleID(std::optional<std::string_view> bundleID);

}  // namespace purlock
