#include "core/report.h"

#include <gtest/gtest.h>

#include "core/cause_engine.h"
#include "tests/core/records.h"

namespace purlock {
namespace {

using test::floatFormat;
using test::integerFormat;

TEST(Verdict, EqualityComparesTheCaseAndWhatItCarries) {
    const AudioFormat a = integerFormat(44100, 16);
    const AudioFormat b = integerFormat(48000, 16);
    const AudioFormat moreChannels = integerFormat(44100, 16, 6);
    const Verdict rows[] = {
        verdict::Idle{a},          verdict::Idle{b},          verdict::Idle{moreChannels},
        verdict::BitPerfect{a},    verdict::BitPerfect{b},    verdict::Resampling{a, b},
        verdict::Resampling{b, a}, verdict::Resampling{a, a}, verdict::Unknown{},
        verdict::Unknown{"aplay"}, verdict::Altered{a},       verdict::Altered{b},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        for (std::size_t j = 0; j < std::size(rows); ++j) {
            SCOPED_TRACE(testing::Message() << "rows " << i << " and " << j);
            EXPECT_EQ(rows[i] == rows[j], i == j);
        }
    }
}

TEST(Verdict, HasAHeadline) {
    const AudioFormat format = integerFormat(44100, 16);
    const struct {
        Verdict verdict;
        const char* headline;
    } rows[] = {
        {verdict::Idle{format}, "Idle"},
        {verdict::BitPerfect{format}, "Bit-perfect"},
        {verdict::Resampling{format, format}, "Resampling"},
        {verdict::Unknown{}, "No device"},
        {verdict::Unknown{"aplay"}, "Not known"},
        {verdict::Altered{format}, "Altered"},
    };
    for (const auto& row : rows) EXPECT_EQ(verdictHeadline(row.verdict), row.headline);
}

TEST(SignalPathReport, TwoEvaluationsAgreeOnTheVerdictAndOnNothingThatHasAnIdentity) {
    const auto state = test::device(DeviceTransport::usb, floatFormat(48000), integerFormat(44100, 24));
    const auto first = CauseEngine::evaluate(state, {}, {}, {});
    const auto second = CauseEngine::evaluate(state, {}, {}, {});
    EXPECT_EQ(first.verdict, second.verdict);
    ASSERT_EQ(first.diagnostics.size(), 2U);
    EXPECT_NE(first.stages, second.stages);
    EXPECT_NE(first.diagnostics, second.diagnostics);
    EXPECT_NE(first, second);
    EXPECT_EQ(first, SignalPathReport(first));
    for (std::size_t i = 0; i < first.stages.size(); ++i) {
        EXPECT_EQ(first.stages[i].primary, second.stages[i].primary);
        EXPECT_NE(first.stages[i], second.stages[i]);
    }
}

TEST(SignalPathReport, EqualityComparesEveryFieldOfStagesAndFindings) {
    const auto report = CauseEngine::evaluate(
        test::device(DeviceTransport::usb, floatFormat(48000), integerFormat(44100, 24)), {}, {}, {});
    struct Row {
        const char* name;
        void (*change)(SignalPathReport&);
    };
    const Row rows[] = {
        {"stage id", [](auto& r) { r.stages[2].id = Uuid::random(); }},
        {"stage kind", [](auto& r) { r.stages[2].kind = SignalStage::Kind::wire; }},
        {"stage title", [](auto& r) { r.stages[2].title = ""; }},
        {"stage primary", [](auto& r) { r.stages[2].primary = ""; }},
        {"stage secondary", [](auto& r) { r.stages[2].secondary.reset(); }},
        {"stage bit rate", [](auto& r) { r.stages[2].bitrate.reset(); }},
        {"stage quality", [](auto& r) { r.stages[2].quality = SignalStage::Quality::lossy; }},
        {"stage order", [](auto& r) { std::swap(r.stages[0], r.stages[1]); }},
        {"stage missing", [](auto& r) { r.stages.pop_back(); }},
        {"finding id", [](auto& r) { r.diagnostics[0].id = Uuid::random(); }},
        {"finding severity", [](auto& r) { r.diagnostics[0].severity = Diagnostic::Severity::low; }},
        {"finding title", [](auto& r) { r.diagnostics[0].title = ""; }},
        {"finding cause", [](auto& r) { r.diagnostics[0].cause = ""; }},
        {"finding fix", [](auto& r) { r.diagnostics[0].fix = ""; }},
        {"finding order", [](auto& r) { std::swap(r.diagnostics[0], r.diagnostics[1]); }},
        {"verdict", [](auto& r) { r.verdict = verdict::Unknown{}; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto changed = report;
        row.change(changed);
        EXPECT_NE(changed, report);
    }
}

TEST(SignalPathReport, BeginsEmptyAndUnknown) {
    const SignalPathReport report;
    EXPECT_TRUE(report.stages.empty());
    EXPECT_TRUE(report.diagnostics.empty());
    EXPECT_EQ(report.verdict, Verdict(verdict::Unknown{}));
}

}  // namespace
}  // namespace purlock
