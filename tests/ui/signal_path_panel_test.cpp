#include "ui/signal_path_panel.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/view_reading.h"
#include "ui/view_parts.h"

namespace purlock {
namespace {

using Kind = SignalStage::Kind;
using Quality = SignalStage::Quality;
using Severity = Diagnostic::Severity;
using Texts = std::vector<std::string>;

constexpr Kind allKinds[] = {Kind::source,      Kind::app,  Kind::halVirtual,
                             Kind::halPhysical, Kind::wire, Kind::device};

SignalStage stage(Kind kind, Quality quality) {
    SignalStage stage;
    stage.kind = kind;
    stage.title = "Title";
    stage.primary = "Primary";
    stage.quality = quality;
    return stage;
}

Diagnostic finding(Severity severity) {
    Diagnostic diag;
    diag.severity = severity;
    diag.title = "What";
    diag.cause = "Why";
    diag.fix = "How";
    return diag;
}

View drawn(const SignalPathReport& report) {
    return SignalPathPanel{report}.body();
}

TEST(SignalPathPanel, QualityColours) {
    EXPECT_EQ(qualityColor(Quality::lossless), (Color{0.3, 0.78, 0.45, 1}));
    EXPECT_EQ(qualityColor(Quality::formatOnly), (Color{0.95, 0.75, 0.2, 1}));
    EXPECT_EQ(qualityColor(Quality::lossy), (Color{0.92, 0.3, 0.3, 1}));
    EXPECT_EQ(qualityColor(Quality::unknown), (Color{0.45, 0.45, 0.45, 1}));
}

TEST(SignalPathPanel, KindSymbols) {
    EXPECT_EQ(kindSymbol(Kind::source), "music.note");
    EXPECT_EQ(kindSymbol(Kind::app), "app.fill");
    EXPECT_EQ(kindSymbol(Kind::halVirtual), "waveform");
    EXPECT_EQ(kindSymbol(Kind::halPhysical), "waveform.path");
    EXPECT_EQ(kindSymbol(Kind::wire), "cable.connector");
    EXPECT_EQ(kindSymbol(Kind::device), "hifispeaker.fill");
}

struct TransitionCase {
    const char* name;
    Quality from;
    Quality to;
    Quality shown;
};

void PrintTo(const TransitionCase& row, std::ostream* out) {
    *out << row.name;
}

class TransitionQuality : public testing::TestWithParam<TransitionCase> {};

TEST_P(TransitionQuality, IsTheWorseOfTheTwo) {
    EXPECT_EQ(transitionQuality(GetParam().from, GetParam().to), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, TransitionQuality,
    testing::Values(
        TransitionCase{"LosslessTwice", Quality::lossless, Quality::lossless, Quality::lossless},
        TransitionCase{"LosslessToFormatOnly", Quality::lossless, Quality::formatOnly, Quality::formatOnly},
        TransitionCase{"LosslessToLossy", Quality::lossless, Quality::lossy, Quality::lossy},
        TransitionCase{"LosslessToUnknownStaysGreen", Quality::lossless, Quality::unknown, Quality::lossless},
        TransitionCase{"FormatOnlyToLossless", Quality::formatOnly, Quality::lossless, Quality::formatOnly},
        TransitionCase{"FormatOnlyTwice", Quality::formatOnly, Quality::formatOnly, Quality::formatOnly},
        TransitionCase{"FormatOnlyToLossy", Quality::formatOnly, Quality::lossy, Quality::lossy},
        TransitionCase{"FormatOnlyToUnknown", Quality::formatOnly, Quality::unknown, Quality::formatOnly},
        TransitionCase{"LossyToLossless", Quality::lossy, Quality::lossless, Quality::lossy},
        TransitionCase{"LossyToFormatOnly", Quality::lossy, Quality::formatOnly, Quality::lossy},
        TransitionCase{"LossyTwice", Quality::lossy, Quality::lossy, Quality::lossy},
        TransitionCase{"LossyToUnknown", Quality::lossy, Quality::unknown, Quality::lossy},
        TransitionCase{"UnknownToLossless", Quality::unknown, Quality::lossless, Quality::lossless},
        TransitionCase{"UnknownToFormatOnly", Quality::unknown, Quality::formatOnly, Quality::formatOnly},
        TransitionCase{"UnknownToLossyIsRed", Quality::unknown, Quality::lossy, Quality::lossy},
        TransitionCase{"UnknownTwice", Quality::unknown, Quality::unknown, Quality::unknown}),
    [](const auto& row) { return row.param.name; });

TEST(SignalPathPanel, EachPairOfKindsHasItsLabel) {
    const auto expected = [](Kind from, Kind to) -> std::string {
        if (from == Kind::source && to == Kind::app) return "delivers to";
        if (from == Kind::app && to == Kind::halVirtual) return "writes to OS";
        if (from == Kind::halVirtual && to == Kind::halPhysical) return "OS sends to wire";
        if (from == Kind::halPhysical && to == Kind::wire) return "encoded for wire";
        if (from == Kind::halPhysical && to == Kind::device) return "to device";
        if (from == Kind::wire && to == Kind::device) return "received by";
        return "→";
    };
    for (const Kind from : allKinds) {
        for (const Kind to : allKinds) {
            EXPECT_EQ(transitionLabel(from, to), expected(from, to))
                << static_cast<int>(from) << " to " << static_cast<int>(to);
        }
    }
}

TEST(SignalPathPanel, AnEmptyReportIsSixteenPointsOfNothing) {
    const View view = drawn({});
    ASSERT_EQ(view.children.size(), 1U);
    EXPECT_EQ(test::contentOf<Space>(view.children[0]), (Space{0, 16}));
}

TEST(SignalPathPanel, OneStageHasNoConnector) {
    SignalPathReport report;
    report.stages = {stage(Kind::source, Quality::lossless)};
    const View view = drawn(report);
    EXPECT_EQ(view.children.size(), 2U);
    EXPECT_TRUE(test::elementsOf<Bar>(view).empty());
}

TEST(SignalPathPanel, EveryTwoNeighboursAreConnected) {
    SignalPathReport report;
    for (const Kind kind : {Kind::source, Kind::app, Kind::halVirtual, Kind::halPhysical, Kind::device}) {
        report.stages.push_back(stage(kind, Quality::lossless));
    }
    const View view = drawn(report);
    EXPECT_EQ(view.children.size(), 10U) << "five rows, four connectors, the space";
    Texts labels;
    for (const std::string& text : test::textsOf(view)) {
        if (text != "TITLE" && text != "Primary") labels.push_back(text);
    }
    EXPECT_EQ(labels, (Texts{"delivers to", "writes to OS", "OS sends to wire", "to device"}));
}

TEST(SignalPathPanel, AConnectorIsABarAndALabelInTheColourOfTheHop) {
    SignalPathReport report;
    report.stages = {stage(Kind::app, Quality::lossless), stage(Kind::halPhysical, Quality::lossy)};
    const View connector = drawn(report).children[1];
    EXPECT_EQ(test::contentOf<Row>(connector).spacing, 0);
    ASSERT_EQ(connector.children.size(), 4U);
    EXPECT_EQ(test::contentOf<Space>(connector.children[0]).width, 11);
    EXPECT_EQ(test::contentOf<Bar>(connector.children[1]), (Bar{2, 14, accentRed, true}));
    EXPECT_EQ(test::contentOf<Space>(connector.children[2]).width, 8);
    EXPECT_EQ(test::contentOf<Text>(connector.children[3]),
              (Text{"→", {10}, withOpacity(accentRed, 0.75), Lines::one}));
}

TEST(SignalPathPanel, StagesOfEqualQualityAreConnectedInItsColour) {
    for (const Quality quality : {Quality::lossless, Quality::formatOnly, Quality::lossy, Quality::unknown}) {
        SignalPathReport report;
        report.stages = {stage(Kind::source, quality), stage(Kind::app, quality)};
        const View view = drawn(report);
        EXPECT_EQ(test::contentOf<Bar>(*test::elementsOf<Bar>(view)[0]).color, qualityColor(quality));
    }
}

TEST(StageRow, ShowsABadgeInTheColourOfTheQuality) {
    const SignalStage wire = stage(Kind::wire, Quality::formatOnly);
    const View view = StageRow{wire}.body();
    const View& badge = view.children[0];
    EXPECT_EQ(badge.frame, (Size{22, 22}));
    ASSERT_EQ(badge.children.size(), 3U);
    EXPECT_EQ(test::contentOf<Circle>(badge.children[0]),
              (Circle{22, withOpacity(accentAmber, 0.25), {}, 1, {}}));
    EXPECT_EQ(test::contentOf<Circle>(badge.children[1]), (Circle{22, {}, Stroke{accentAmber, 1.5}, 1, {}}));
    EXPECT_EQ(test::contentOf<Symbol>(badge.children[2]),
              (Symbol{"cable.connector", {10, FontWeight::semibold}, accentAmber}));
}

TEST(StageRow, ShowsAllItsTexts) {
    SignalStage full = stage(Kind::source, Quality::lossless);
    full.title = "Source größe";
    full.secondary = "Secondary";
    full.bitrate = "4.61 Mbps";
    const View view = StageRow{full}.body();
    EXPECT_EQ(test::textsOf(view), (Texts{"SOURCE GRÖSSE", "4.61 Mbps", "Primary", "Secondary"}));
    EXPECT_EQ(*test::textReading(view, "SOURCE GRÖSSE"),
              (Text{"SOURCE GRÖSSE", {10, FontWeight::semibold}, white(0.4), Lines::one}));
    EXPECT_EQ(*test::textReading(view, "4.61 Mbps"), (Text{"4.61 Mbps", {10}, white(0.55), Lines::one}));
    EXPECT_EQ(*test::textReading(view, "Primary"),
              (Text{"Primary", {12, FontWeight::medium}, white(), Lines::one}));
    EXPECT_EQ(*test::textReading(view, "Secondary"), (Text{"Secondary", {10}, white(0.5), Lines::asNeeded}));
    EXPECT_EQ(test::contentOf<Column>(view.children[1]).spacing, 2);
    EXPECT_EQ(test::elementsOf<FlexibleSpace>(view).size(), 1U) << "the bit rate stands at the far edge";
}

TEST(StageRow, WithoutSecondaryAndBitRateTwoLinesAreLeft) {
    const SignalStage bare = stage(Kind::device, Quality::unknown);
    const View view = StageRow{bare}.body();
    EXPECT_EQ(test::textsOf(view), (Texts{"TITLE", "Primary"}));
    EXPECT_TRUE(test::elementsOf<FlexibleSpace>(view).empty());
}

TEST(StageRow, IsIdentifiedByItsStage) {
    const SignalStage one = stage(Kind::device, Quality::unknown);
    EXPECT_EQ(StageRow{one}.body().id, one.id.text());
}

TEST(DiagnosticRow, ShowsWhatWhyAndHowInTheColourOfItsSeverity) {
    struct Case {
        Severity severity;
        Color color;
    };
    for (const auto& [severity, color] :
         {Case{Severity::high, {0.92, 0.3, 0.3, 1}}, Case{Severity::medium, {0.95, 0.75, 0.2, 1}},
          Case{Severity::low, {0.55, 0.55, 0.55, 1}}}) {
        const Diagnostic diag = finding(severity);
        const View view = DiagnosticRow{diag}.body();
        EXPECT_EQ(test::contentOf<Bar>(view.children[0]), (Bar{2, {}, color}));
        EXPECT_EQ(test::contentOf<Circle>(*test::elementsOf<Circle>(view)[0]), (Circle{7, color, {}, 1, {}}));
    }
}

TEST(DiagnosticRow, ItsTextsWrap) {
    const Diagnostic diag = finding(Severity::high);
    const View view = DiagnosticRow{diag}.body();
    EXPECT_EQ(*test::textReading(view, "What"),
              (Text{"What", {12, FontWeight::semibold}, white(), Lines::asNeeded}));
    EXPECT_EQ(*test::textReading(view, "Why"), (Text{"Why", {11}, white(0.7), Lines::asNeeded}));
    EXPECT_EQ(*test::textReading(view, "How"),
              (Text{"How", {11, FontWeight::regular, FontSlant::italic}, white(0.55), Lines::asNeeded}));
    EXPECT_EQ(test::textsOf(view), (Texts{"What", "Why", "How"}));
}

TEST(DiagnosticRow, StandsOnACardOfFullWidth) {
    const Diagnostic diag = finding(Severity::low);
    const View view = DiagnosticRow{diag}.body();
    EXPECT_EQ(view.padding, (Padding{10, 10}));
    EXPECT_EQ(view.background, (Background{white(0.04), 6}));
    EXPECT_EQ(view.width, Width::available);
    EXPECT_EQ(view.id, diag.id.text());
}

TEST(SignalPathPanel, FindingsStandUnderTheirHeaderInOrder) {
    SignalPathReport report;
    report.diagnostics = {finding(Severity::low), finding(Severity::high)};
    report.diagnostics[1].title = "Second";
    const View view = drawn(report);
    EXPECT_EQ(test::textsOf(view), (Texts{"FINDINGS", "What", "Why", "How", "Second", "Why", "How"}));
    EXPECT_EQ(*test::textReading(view, "FINDINGS"),
              (Text{"FINDINGS", {10, FontWeight::semibold}, white(0.4), Lines::one}));
    const View& header = view.children[1];
    EXPECT_EQ(test::contentOf<Space>(header.children[1]).height, 8) << "below the header";
}

TEST(VerdictBadge, Table) {
    struct Case {
        Verdict verdict;
        Color color;
        const char* label;
    };
    const AudioFormat format{};
    const Case cases[] = {
        {verdict::Idle{format}, {0.5, 0.5, 0.5, 1}, "Idle"},
        {verdict::BitPerfect{format}, {0.3, 0.78, 0.45, 1}, "Bit-perfect"},
        {verdict::Resampling{format, format}, {0.95, 0.75, 0.2, 1}, "Resampling"},
        {verdict::Unknown{}, {0.5, 0.5, 0.5, 1}, "No device"},
        {verdict::Altered{format}, {0.95, 0.75, 0.2, 1}, "Altered"},
    };
    for (const auto& [verdict, color, label] : cases) {
        const View view = VerdictBadge{verdict}.body();
        EXPECT_EQ(test::contentOf<Circle>(view.children[0]), (Circle{10, color, {}, 1, {}})) << label;
        EXPECT_EQ(test::contentOf<Text>(view.children[1]),
                  (Text{label, {13, FontWeight::semibold}, white(), Lines::one}));
    }
}

}  // namespace
}  // namespace purlock
