#pragma once

#include <optional>
#include <string_view>

#include "source/introspection.h"

namespace purlock {

/// What Apple Music claims: the quality set in its preferences, and the badge in its window. Stateless; main
/// thread.
namespace AppleMusicIntrospector {

/// The preference decides what is declared, the badge where there is none. Both are read at every call.
SourceClaim read(const IntrospectionSeams& seams);

/// Absent when the file cannot be read; a readable one always gives a tier, the lowest when it says nothing.
std::optional<Prefs> readPreferences(const IntrospectionSeams& seams);

/// What the tier means, by the words in it, whatever their letter case.
TierMeaning normaliseTier(std::optional<std::string_view> tier);

}  // namespace AppleMusicIntrospector

}  // namespace purlock
