#pragma once

#include <string>

#include "core/verdict.h"
#include "ui/window_seams.h"

namespace purlock {

// What the status item shows for a verdict. Pure; any thread.

SymbolImage symbolImage(const Verdict& verdict);

/// "Purlock — Bit-perfect".
std::string statusToolTip(const Verdict& verdict);

}  // namespace purlock
