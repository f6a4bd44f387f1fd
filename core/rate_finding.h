#pragma once

#include <optional>

#include "core/mixer_work.h"
#include "core/report.h"
#include "core/system_words.h"

namespace purlock::CauseEngine {

/// The finding that a rate is converted on its way from the application to the device, with the reason and
/// the fix for it where `conversion` knows them. Rates are in Hz. Pure.
Diagnostic rateFinding(double from, double to, const std::optional<RateConversion>& conversion,
                       const SystemWords& words);

}  // namespace purlock::CauseEngine
