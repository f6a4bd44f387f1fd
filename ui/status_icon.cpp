#include "ui/status_icon.h"

#include <optional>
#include <string_view>

#include "base/overloaded.h"

namespace purlock {

namespace {

/// A symbol without colours of its own takes the bar's.
struct Icon {
    std::string_view symbol;
    std::optional<IconColors> colors;
};

Icon icon(const Verdict& verdict) {
    return std::visit(Overloaded{
                          [](const verdict::Idle&) {
                              return Icon{"circle", {}};
                          },
                          [](const verdict::BitPerfect&) {
                              return Icon{"checkmark.seal.fill", iconGreen};
                          },
                          [](const verdict::Resampling&) {
                              return Icon{"exclamationmark.triangle.fill", iconAmber};
                          },
                          [](const verdict::Unknown&) {
                              return Icon{"questionmark.circle", {}};
                          },
                          [](const verdict::Altered&) {
                              return Icon{"slider.horizontal.3", iconAmber};
                          },
                      },
                      verdict);
}

}  // namespace

SymbolImage symbolImage(const Verdict& verdict) {
    const auto [symbol, colors] = icon(verdict);
    return {.name = std::string(symbol),
            .accessibilityDescription = std::string(verdictHeadline(verdict)),
            .pointSize = 14,
            .weight = FontWeight::semibold,
            .colors = colors};
}

std::string statusToolTip(const Verdict& verdict) {
    return "Purlock — " + std::string(verdictHeadline(verdict));
}

}  // namespace purlock
