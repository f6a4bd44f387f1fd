#include "ui/signal_path_panel.h"

#include <string>

#include "base/overloaded.h"
#include "base/text.h"
#include "ui/view_parts.h"

namespace purlock {

namespace {

using Kind = SignalStage::Kind;
using Quality = SignalStage::Quality;
using Severity = Diagnostic::Severity;

constexpr Font caption{10, FontWeight::semibold};

/// Higher is worse.
int rank(Quality quality) {
    switch (quality) {
        case Quality::lossy:
            return 3;
        case Quality::formatOnly:
            return 2;
        case Quality::lossless:
            return 1;
        case Quality::unknown:
            return 0;
    }
    return 0;
}

/// What a screen reader says for the colour.
std::string_view qualityWords(Quality quality) {
    switch (quality) {
        case Quality::lossless:
            return "Lossless";
        case Quality::formatOnly:
            return "Format known";
        case Quality::lossy:
            return "Lossy";
        case Quality::unknown:
            return "Quality not known";
    }
    return "";
}

Color severityColor(Severity severity) {
    switch (severity) {
        case Severity::high:
            return accentRed;
        case Severity::medium:
            return accentAmber;
        case Severity::low:
            return gray(0.55);
    }
    return gray(0.55);
}

std::string_view severityWords(Severity severity) {
    switch (severity) {
        case Severity::high:
            return "High severity";
        case Severity::medium:
            return "Medium severity";
        case Severity::low:
            return "Low severity";
    }
    return "";
}

View badge(const SignalStage& stage) {
    const Color color = qualityColor(stage.quality);
    View badge = container(Overlay{}, {disc(22, withOpacity(color, 0.25)), ring(22, color, 1.5),
                                       symbol(std::string(kindSymbol(stage.kind)), caption, color)});
    badge.frame = Size{22, 22};
    badge.children.back().label = qualityWords(stage.quality);
    badge.readLast = true;  // first what it is about
    return badge;
}

View stageTitle(const SignalStage& stage) {
    View title = row(defaultSpacing, {captionLine(stage.title, white(0.4))});
    if (stage.bitrate) {
        title.children.push_back(flexibleSpace());
        title.children.push_back(line(*stage.bitrate, {10}, white(0.55)));
    }
    return title;
}

View connector(const SignalStage& from, const SignalStage& to) {
    const Color color = qualityColor(transitionQuality(from.quality, to.quality));
    return row(0, {space(11, 0), element(Bar{2, 14, color, true}), space(8, 0),
                   line(std::string(transitionLabel(from.kind, to.kind)), {10}, withOpacity(color, 0.75))});
}

View copyButton(const std::string& command) {
    View face = onCard(row(0, {line("Copy", {11}, white(0.7))}), {3, 8}, 0.08);
    View button = container(Button{Copy{command}}, {std::move(face)});
    button.help = "Copy: " + command;
    button.label = command;
    button.id = "copy";
    return button;
}

View findingsHeader() {
    return column(0, {captionLine("Findings", white(0.4)), space(0, 8)});
}

}  // namespace

Color qualityColor(Quality quality) {
    switch (quality) {
        case Quality::lossless:
            return accentGreen;
        case Quality::formatOnly:
            return accentAmber;
        case Quality::lossy:
            return accentRed;
        case Quality::unknown:
            return gray(0.45);
    }
    return gray(0.45);
}

std::string_view kindSymbol(Kind kind) {
    switch (kind) {
        case Kind::source:
            return "music.note";
        case Kind::app:
            return "app.fill";
        case Kind::halVirtual:
            return "waveform";
        case Kind::halPhysical:
            return "waveform.path";
        case Kind::wire:
            return "cable.connector";
        case Kind::device:
            return "hifispeaker.fill";
    }
    return "";
}

Quality transitionQuality(Quality from, Quality to) {
    return rank(from) < rank(to) ? to : from;
}

std::string_view transitionLabel(Kind from, Kind to) {
    struct Hop {
        Kind from;
        Kind to;
        std::string_view label;
    };
    static constexpr Hop hops[] = {
        {Kind::source, Kind::app, "delivers to"},
        {Kind::app, Kind::halVirtual, "writes to OS"},
        {Kind::halVirtual, Kind::halPhysical, "OS sends to wire"},
        {Kind::halPhysical, Kind::wire, "encoded for wire"},
        {Kind::halPhysical, Kind::device, "to device"},
        {Kind::wire, Kind::device, "received by"},
    };
    for (const Hop& hop : hops) {
        if (hop.from == from && hop.to == to) return hop.label;
    }
    return "→";
}

View SignalPathPanel::body() const {
    View panel = column(betweenStages, {});
    for (std::size_t i = 0; i < report.stages.size(); ++i) {
        panel.children.push_back(StageRow{report.stages[i]}.body());
        if (i + 1 < report.stages.size()) {
            panel.children.push_back(connector(report.stages[i], report.stages[i + 1]));
        }
    }
    panel.children.push_back(space(0, 16));
    if (report.diagnostics.empty()) return panel;
    panel.children.push_back(findingsHeader());
    View findings = column(defaultSpacing, {});
    for (const Diagnostic& diag : report.diagnostics) {
        findings.children.push_back(DiagnosticRow{diag, canCopy}.body());
    }
    panel.children.push_back(std::move(findings));
    return panel;
}

View StageRow::body() const {
    View texts = column(2, {stageTitle(stage), line(stage.primary, {12, FontWeight::medium}, white())});
    if (stage.secondary) texts.children.push_back(paragraph(*stage.secondary, {10}, white(0.5)));
    View view = row(defaultSpacing, {badge(stage), std::move(texts)});
    view.id = stage.id.text();
    return view;
}

View DiagnosticRow::body() const {
    const Color color = severityColor(diag.severity);
    View dot = disc(7, color);
    dot.label = severityWords(diag.severity);
    View heading =
        row(defaultSpacing, {std::move(dot), paragraph(diag.title, {12, FontWeight::semibold}, white())});
    const Font italic{11, FontWeight::regular, FontSlant::italic};
    View texts = column(4, {std::move(heading), paragraph(diag.cause, {11}, white(0.7)),
                            paragraph(diag.fix, italic, white(0.55))});
    if (diag.command && canCopy) texts.children.push_back(copyButton(*diag.command));
    View view = onCard(row(defaultSpacing, {element(Bar{2, {}, color}), std::move(texts)}), {10, 10}, 0.04);
    view.width = Width::available;
    view.id = diag.id.text();
    return view;
}

View VerdictBadge::body() const {
    const Color color = std::visit(Overloaded{
                                       [](const verdict::Idle&) { return gray(0.5); },
                                       [](const verdict::BitPerfect&) { return accentGreen; },
                                       [](const verdict::Resampling&) { return accentAmber; },
                                       [](const verdict::Unknown&) { return gray(0.5); },
                                       [](const verdict::Altered&) { return accentAmber; },
                                   },
                                   verdict);
    return row(defaultSpacing, {disc(10, color), line(std::string(verdictHeadline(verdict)),
                                                      {13, FontWeight::semibold}, white())});
}

}  // namespace purlock
