#pragma once

#include <string>

#include "core/verdict.h"
#include "ui/view_parts.h"
#include "ui/window_seams.h"

namespace purlock {

// What the status item shows for a verdict. Pure; any thread.

// The colours of the verdicts that matter.
inline constexpr IconColors iconGreen{accentGreen, {0.13, 0.58, 0.29, 1}};
inline constexpr IconColors iconAmber{accentAmber, {0.74, 0.46, 0.02, 1}};

SymbolImage symbolImage(const Verdict& verdict);

/// "Purlock — Bit-perfect".
std::string statusToolTip(const Verdict& verdict);

}  // namespace purlock
