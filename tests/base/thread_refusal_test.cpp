#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/worker_pool.h"

namespace purlock {
namespace {

/// Starts threads, but refuses those that a test says.
class Machine {
  public:
    std::atomic<int> refusals = 0;  // how many of the next threads it refuses
    std::atomic<int> asked = 0;

    WorkerPool::ThreadStarter starter() {
        return [this](std::function<void()> body) -> std::optional<std::thread> {
            ++asked;
            if (refusals > 0) {
                --refusals;
                return std::nullopt;
            }
            return startThread(std::move(body));
        };
    }
};

constexpr int always = 1'000'000;

TEST(ThreadRefusal, WorkWaitsForTheNextWorkThatGetsAThread) {
    Machine machine;
    std::vector<std::string> ran;
    std::promise<void> done;
    {
        WorkerPool pool(2, {}, machine.starter());
        const auto first = pool.makeSerialQueue("first");
        const auto second = pool.makeSerialQueue("second");
        machine.refusals = 3;
        first->async([&] { ran.emplace_back("1 of first"); });
        first->async([&] { ran.emplace_back("2 of first"); });
        second->async([&] { ran.emplace_back("1 of second"); });
        EXPECT_TRUE(ran.empty());
        second->async([&] { done.set_value(); });
        done.get_future().wait();
    }
    ASSERT_EQ(ran.size(), 3U);
    EXPECT_EQ(std::erase(ran, "1 of second"), 1U);
    EXPECT_EQ(ran, (std::vector<std::string>{"1 of first", "2 of first"}));
}

TEST(ThreadRefusal, ARunningThreadTakesTheWork) {
    Machine machine;
    std::promise<void> release;
    std::promise<std::thread::id> busyOn;
    std::promise<std::thread::id> otherOn;
    WorkerPool pool(2, {}, machine.starter());
    const auto busy = pool.makeSerialQueue("busy");
    const auto other = pool.makeSerialQueue("other");
    busy->async([&] {
        busyOn.set_value(std::this_thread::get_id());
        release.get_future().wait();
    });
    const auto thread = busyOn.get_future().get();
    machine.refusals = always;
    other->async([&] { otherOn.set_value(std::this_thread::get_id()); });
    release.set_value();
    EXPECT_EQ(otherOn.get_future().get(), thread);
}

TEST(ThreadRefusal, OnceThereIsAThreadNoOtherIsAskedFor) {
    Machine machine;
    WorkerPool pool(2, {}, machine.starter());
    const auto queue = pool.makeSerialQueue("q");
    machine.refusals = 1;
    queue->async([] {});
    for (int round = 0; round < 50; ++round) {
        std::promise<void> done;
        queue->async([&] { done.set_value(); });
        done.get_future().wait();
    }
    EXPECT_EQ(machine.asked, 2);
}

TEST(ThreadRefusal, TheEndAsksOnceMore) {
    Machine machine;
    int ran = 0;
    WorkerPool pool(1, {}, machine.starter());
    const auto queue = pool.makeSerialQueue("q");
    machine.refusals = 2;
    queue->async([&] { ++ran; });
    queue->async([&] { ++ran; });
    pool.finish();
    EXPECT_EQ(ran, 2);
}

TEST(ThreadRefusal, WithoutAnyThreadTheEndDropsTheWork) {
    for (const bool limited : {false, true}) {
        Machine machine;
        machine.refusals = always;
        WorkerPool pool(1, {}, machine.starter());
        auto queue = pool.makeSerialQueue("q");
        const auto witness = std::make_shared<int>(0);
        queue->async([witness, queue] { FAIL() << "there was no thread"; });
        queue->async([witness, queue] { FAIL() << "there was no thread"; });
        if (limited) {
            EXPECT_TRUE(pool.finishWithin(std::chrono::seconds(10)));
        } else {
            pool.finish();
        }
        EXPECT_EQ(witness.use_count(), 1) << "and lets go of what it owned";
        EXPECT_EQ(queue.use_count(), 1);
    }
}

TEST(ThreadRefusal, TheSystemsOwnThreadRuns) {
    bool ran = false;
    auto thread = startThread([&] { ran = true; });
    ASSERT_TRUE(thread);
    thread->join();
    EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace purlock
