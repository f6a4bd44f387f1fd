#pragma once

#include <string_view>

#include "core/report.h"
#include "ui/view.h"

namespace purlock {

// How a report is drawn. Pure functions of it; any thread.

Color qualityColor(SignalStage::Quality quality);

/// The symbol of a kind of stage.
std::string_view kindSymbol(SignalStage::Kind kind);

/// The quality that the connector between two neighbouring stages shows: the worse of the two, the upper
/// one's when they are equal. An unknown stage never darkens a connector.
SignalStage::Quality transitionQuality(SignalStage::Quality from, SignalStage::Quality to);

/// What the hop between two stages is called; "→" for two that are no neighbours on a full path.
std::string_view transitionLabel(SignalStage::Kind from, SignalStage::Kind to);

/// The stages as a chain with a connector between each two, and under them the findings.
struct SignalPathPanel {
    const SignalPathReport& report;
    bool canCopy = false;      // whether there is a clipboard
    double betweenStages = 4;  // and the connectors between them
    View body() const;
};

/// One stage: a badge with the symbol of its kind, coloured by its quality, and its texts.
struct StageRow {
    const SignalStage& stage;
    View body() const;
};

/// One finding: what, why, and what to do. A command of the fix can be copied where there is a clipboard.
struct DiagnosticRow {
    const Diagnostic& diag;
    bool canCopy = false;
    View body() const;
};

/// The verdict in a word or two, with its colour.
struct VerdictBadge {
    const Verdict& verdict;
    View body() const;
};

}  // namespace purlock
