#include "source/accessibility_scraper.h"

#include <algorithm>
#include <array>
#include <variant>

#include "base/text.h"

namespace purlock::AccessibilityScraper {

namespace {

constexpr std::array<std::string_view, 4> textAttributes = {"AXValue", "AXTitle", "AXDescription", "AXHelp"};
constexpr std::string_view childrenAttribute = "AXChildren";

/// The attribute's value if it is of this type.
template <typename Type>
std::optional<Type> attribute(AccessibilityElement& element, std::string_view name) {
    auto value = element.copyAttributeValue(name);
    auto* held = value ? std::get_if<Type>(&*value) : nullptr;
    if (held == nullptr) return std::nullopt;
    return std::move(*held);
}

bool containsAny(const std::string& text, const std::vector<std::string>& patterns) {
    const std::string lowered = lowercased(text);
    return std::ranges::any_of(patterns,
                               [&](const std::string& pattern) { return contains(lowered, pattern); });
}

}  // namespace

std::optional<std::string> scrape(AccessibilityTree& tree, RunningApplications& applications,
                                  std::string_view bundleID, std::span<const std::string_view> patterns) {
    if (!tree.isProcessTrusted()) return std::nullopt;
    const auto running = applications.runningApplicationsWithBundleIdentifier(bundleID);
    if (running.empty()) return std::nullopt;
    const auto application = tree.createApplication(running.front().processIdentifier);
    std::vector<std::string> lowered;
    lowered.reserve(patterns.size());
    for (const std::string_view pattern : patterns) lowered.push_back(lowercased(pattern));
    return walk(*application, lowered, 0);
}

std::optional<std::string> walk(AccessibilityElement& element, const std::vector<std::string>& patterns,
                                int depth) {
    if (depth > depthLimit) return std::nullopt;
    for (const std::string_view name : textAttributes) {
        const auto text = attribute<std::string>(element, name);
        if (text && containsAny(*text, patterns)) return std::string(trimmed(*text));
    }
    const auto children = attribute<AccessibilityElements>(element, childrenAttribute);
    if (!children) return std::nullopt;
    for (const auto& child : *children) {
        if (auto badge = walk(*child, patterns, depth + 1)) return badge;
    }
    return std::nullopt;
}

}  // namespace purlock::AccessibilityScraper
