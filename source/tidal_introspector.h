#pragma once

#include <optional>
#include <string_view>

#include "source/introspection.h"

namespace purlock {

/// What Tidal claims: the quality set in its preferences, and the badge in its window. Stateless; main
/// thread.
namespace TidalIntrospector {

/// The preference decides what is declared, the badge where there is none. Both are read at every call.
SourceClaim read(const IntrospectionSeams& seams);

/// The first of four keys that holds a text or an integer, in the first of two files that has one. Absent
/// when no file gives anything; a record without a tier when an integer that names none stopped the search.
std::optional<Prefs> readTidalPreferences(const IntrospectionSeams& seams);

/// What the tier means, by the words in it, whatever their letter case.
TierMeaning normaliseTier(std::optional<std::string_view> tier);

}  // namespace TidalIntrospector

}  // namespace purlock
