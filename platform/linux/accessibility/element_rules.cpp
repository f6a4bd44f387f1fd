#include "platform/linux/accessibility/element_rules.h"

#include <algorithm>
#include <array>

namespace purlock::host_linux {

namespace {

constexpr std::int64_t showingState = 25;  // ATSPI_STATE_SHOWING
constexpr std::int64_t visibleState = 30;  // ATSPI_STATE_VISIBLE

constexpr std::int64_t passwordText = 40;  // ATSPI_ROLE_PASSWORD_TEXT

/// Table, row, tree table: what they show is in their cells. A browser gives them a content all the same, in
/// which a mark stands for each cell.
constexpr std::array<std::int64_t, 3> gridRoles = {55, 90, 66};

/// Combo box, spin button, text, auto-complete, edit bar, entry.
constexpr std::array<std::int64_t, 6> fieldRoles = {11, 52, 61, 76, 77, 79};

}  // namespace

/// The states come as two words of 32 bits; both of interest lie in the first.
bool isOnScreen(const BusValue* states) {
    const BusValue* word = states != nullptr ? states->at(0) : nullptr;
    const std::int64_t bits = word != nullptr ? word->integer().value_or(0) : 0;
    return (bits & (std::int64_t{1} << showingState | std::int64_t{1} << visibleState)) != 0;
}

bool countsByContent(std::int64_t role, bool isNameless) {
    if (role == passwordText || std::ranges::find(gridRoles, role) != gridRoles.end()) return false;
    return isNameless || std::ranges::find(fieldRoles, role) != fieldRoles.end();
}

}  // namespace purlock::host_linux
