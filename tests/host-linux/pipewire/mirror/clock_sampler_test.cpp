#include "platform/linux/pipewire/mirror/clock_sampler.h"

#include <gtest/gtest.h>
#include <pipewire/impl.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "tests/support/private_session.h"

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using Moment = std::chrono::steady_clock::time_point;

/// A client of its own, whose loop this thread runs.
class ClockSamplerTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(session.startAudio()) << session.logs();
        ASSERT_TRUE(session.loadNullSink("sink", 48000)) << session.logs();
        session.spawn("player", {"pw-play", "--target", "sink", session.toneFile(48000)});
        context.reset(pw_context_new(loop(), nullptr, 0));
        pw_context_load_module(context.get(), PW_EXTENSION_MODULE_PROFILER, nullptr, nullptr);
        core.reset(pw_context_connect(context.get(), nullptr, 0));
        ASSERT_TRUE(core);
        registry.reset(reinterpret_cast<pw_proxy*>(pw_core_get_registry(core.get(), PW_VERSION_REGISTRY, 0)));
        auto* const objects = reinterpret_cast<pw_registry*>(registry.get());
        sampler.emplace(loop(), objects, [this](const auto& clocks) { reports.push_back({now(), clocks}); });
        pw_registry_add_listener(objects, listener.hook(), &events, this);
    }

    void TearDown() override { sampler.reset(); }

    pw_loop* loop() { return pw_thread_loop_get_loop(thread.get()); }
    static Moment now() { return std::chrono::steady_clock::now(); }

    /// Runs the loop until the condition holds.
    template <typename Condition>
    bool runUntil(Condition condition, std::chrono::milliseconds time = 10s) {
        const Moment end = now() + time;
// The calls are macros that compare an unsigned version with 0 or 1.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-compare"
        pw_loop_enter(loop());
        while (!condition() && now() < end) pw_loop_iterate(loop(), 10);
        pw_loop_leave(loop());
#pragma GCC diagnostic pop
        return condition();
    }

    bool hearsOf(double rate) {
        return std::ranges::any_of(reports, [rate](const Report& report) {
            return std::ranges::any_of(report.clocks,
                                       [rate](const GraphClock& each) { return each.rate == rate; });
        });
    }

    struct Report {
        Moment time;
        std::vector<GraphClock> clocks;
    };

    static void found(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                      const spa_dict*) {
        if (std::string_view(type) == PW_TYPE_INTERFACE_Profiler) {
            static_cast<ClockSamplerTest*>(data)->sampler->setProfiler(id);
        }
    }
    static constexpr pw_registry_events events = {.version = PW_VERSION_REGISTRY_EVENTS, .global = found};

    test::PrivateSession session;
    PipeWireLibrary library;
    ThreadLoop thread{pw_thread_loop_new("clock-sampler-test", nullptr)};  // for its loop; never started
    Context context;
    Core core;
    Proxy registry;
    Listener listener;
    std::optional<ClockSampler> sampler;
    std::vector<Report> reports;
};

/// A graph may go on with its old clock for a while. The first report comes at once, the next a second later.
TEST_F(ClockSamplerTest, HearsOfCyclesLongAfterAChange) {
    const Moment begin = now();
    sampler->sample();
    ASSERT_TRUE(runUntil([&] { return hearsOf(48000); }));
    EXPECT_TRUE(runUntil([&] { return !sampler->isSampling(); })) << "it ends by itself";
    EXPECT_GE(reports.back().time - begin, 1s);
}

TEST_F(ClockSamplerTest, SamplesOneReport) {
    sampler->sampleOnce();
    ASSERT_TRUE(runUntil([&] { return !reports.empty() && !sampler->isSampling(); }));
    EXPECT_EQ(reports.size(), 1U);
    EXPECT_TRUE(hearsOf(48000));
    const Moment begin = now();
    sampler->sample();
    sampler->sampleOnce();
    EXPECT_TRUE(runUntil([&] { return !sampler->isSampling(); }));
    EXPECT_GE(now() - begin, 1s) << "one report does not cut a sampling short";
}

}  // namespace
}  // namespace purlock::host_linux
