#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/running_applications.h"
#include "source/accessibility_tree.h"

namespace purlock {

/// Finds the quality badge that a streaming application shows in its window, often the only sign of what it
/// delivers.
///
/// Stateless; main thread only. Needs the user's permission and only checks it. Every failure is an absent
/// text.
namespace AccessibilityScraper {

/// Elements at depth 0, the application itself, to this depth are examined.
inline constexpr int depthLimit = 12;

/// The badge of the first running instance of the application: the first text that contains one of the
/// patterns, whatever the letter case, without the white space around it.
std::optional<std::string> scrape(AccessibilityTree& tree, RunningApplications& applications,
                                  std::string_view bundleID, std::span<const std::string_view> patterns);

/// Depth first and an element before its children; `patterns` are in lower case. The order of the attributes
/// decides before that of the patterns: a value with the last pattern wins over a title with the first.
std::optional<std::string> walk(AccessibilityElement& element, const std::vector<std::string>& patterns,
                                int depth);

}  // namespace AccessibilityScraper

}  // namespace purlock
