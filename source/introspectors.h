#pragma once

#include <optional>

#include "core/source_claim.h"
#include "source/introspection.h"

namespace purlock {

/// Which reader knows what an application claims about its stream. Stateless; main thread; everything is read
/// afresh at each call, and what cannot be read is absent.
namespace Introspectors {

/// The claim of a known application; absent for `other`.
std::optional<SourceClaim> claimFor(SourceApp app, const IntrospectionSeams& seams);

}  // namespace Introspectors

}  // namespace purlock
