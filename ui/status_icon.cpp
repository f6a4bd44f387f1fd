#include "ui/status_icon.h"

#include <string_view>

#include "base/overloaded.h"

namespace purlock {

namespace {

/// A template icon takes the bar's own colour; the two verdicts that matter keep theirs.
struct Icon {
    std::string_view symbol;
    bool isTemplate;
};

Icon icon(const Verdict& verdict) {
    return std::visit(Overloaded{
                          [](const verdict::Idle&) {
                              return Icon{"circle", true};
                          },
                          [](const verdict::BitPerfect&) {
                              return Icon{"checkmark.seal.fill", false};
                          },
                          [](const verdict::Resampling&) {
                              return Icon{"exclamationmark.triangle.fill", false};
                          },
                          [](const verdict::Unknown&) {
                              return Icon{"questionmark.circle", true};
                          },
                          [](const verdict::Altered&) {
                              return Icon{"slider.horizontal.3", false};
                          },
                      },
                      verdict);
}

}  // namespace

SymbolImage symbolImage(const Verdict& verdict) {
    const auto [symbol, isTemplate] = icon(verdict);
    return {.name = std::string(symbol),
            .accessibilityDescription = std::string(verdictHeadline(verdict)),
            .pointSize = 14,
            .weight = FontWeight::semibold,
            .isTemplate = isTemplate};
}

std::string statusToolTip(const Verdict& verdict) {
    return "Purlock — " + std::string(verdictHeadline(verdict));
}

}  // namespace purlock
