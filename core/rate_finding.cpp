#include "core/rate_finding.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "base/overloaded.h"
#include "core/cause_engine.h"

namespace purlock::CauseEngine {

namespace {

/// What goes into the texts of a reason, and which texts these are.
struct Told {
    ReasonWords SystemWords::*words;
    std::string app = {};
    std::string rates = {};
};

/// The allowed rates with the one that is missing, in their order: "44100 48000".
std::string withRate(std::vector<std::uint32_t> rates, double missing) {
    rates.push_back(static_cast<std::uint32_t>(std::lround(missing)));
    std::ranges::sort(rates);
    std::string text;
    for (const std::uint32_t rate : rates) text += (text.empty() ? "" : " ") + std::to_string(rate);
    return text;
}

Told toldOf(const RateReason& reason, double streamRate) {
    return std::visit(
        Overloaded{
            [](const rate_reason::DeviceCannot&) -> Told { return {&SystemWords::deviceCannot}; },
            [](const rate_reason::DeviceIsSet&) -> Told { return {&SystemWords::deviceIsSet}; },
            [&](const rate_reason::NotAllowed& found) -> Told {
                return {&SystemWords::rateNotAllowed, {}, withRate(found.allowed, streamRate)};
            },
            [](const rate_reason::Forced&) -> Told { return {&SystemWords::rateForced}; },
            [](const rate_reason::ForcedByStream& found) -> Told {
                return {&SystemWords::rateForcedByStream, found.application};
            },
            [](const rate_reason::HeldByStream& found) -> Told {
                return {&SystemWords::heldByStream, found.application};
            },
        },
        reason);
}

std::string_view causeOf(const RateConversion& conversion, double to, const SystemWords& words) {
    const bool isTwice = conversion.mixerRate != conversion.streamRate && conversion.mixerRate != to;
    return isTwice && !words.resamplingTwiceCause.empty() ? words.resamplingTwiceCause
                                                          : words.resamplingCause;
}

}  // namespace

Diagnostic rateFinding(double from, double to, const std::optional<RateConversion>& conversion,
                       const SystemWords& words) {
    Diagnostic finding;
    finding.severity = Diagnostic::Severity::high;
    finding.title = words.resamplingTitle;
    const RateConversion known = conversion.value_or(RateConversion{from, from, std::nullopt});
    const auto told = known.reason ? std::optional(toldOf(*known.reason, known.streamRate)) : std::nullopt;
    const std::string streamRate = formatRate(known.streamRate);
    const std::string mixerRate = formatRate(known.mixerRate);
    const std::string deviceRate = formatRate(to);
    std::vector<Filling> fillings = {{"from", streamRate}, {"mixer", mixerRate}, {"to", deviceRate}};
    finding.cause = fill(causeOf(known, to, words), fillings);
    finding.fix = fill(words.resamplingFix, fillings);
    if (!told || (words.*told->words).fix.empty()) return finding;

    const ReasonWords& reason = words.*told->words;
    const std::string hertz = std::to_string(std::lround(known.streamRate));
    fillings.insert(fillings.end(), {{"app", told->app}, {"hertz", hertz}, {"rates", told->rates}});
    finding.cause += " " + fill(reason.cause, fillings);
    if (!reason.command.empty()) finding.command = fill(reason.command, fillings);
    if (finding.command) fillings.emplace_back("command", *finding.command);
    finding.fix = fill(reason.fix, fillings);
    return finding;
}

}  // namespace purlock::CauseEngine
