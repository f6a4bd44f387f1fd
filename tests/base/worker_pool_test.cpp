#include "base/worker_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/published.h"
#include "tests/support/manual_run_loop.h"

namespace purlock {
namespace {

TEST(WorkerPool, AQueueRunsItsWorkInOrderAndOneAtATime) {
    std::vector<int> seen;
    std::atomic<int> running = 0;
    std::atomic<bool> overlapped = false;
    {
        WorkerPool pool(4);
        const auto queue = pool.makeSerialQueue("label");
        EXPECT_EQ(queue->label(), "label");
        for (int i = 0; i < 10000; ++i) {
            queue->async([&, i] {
                if (++running != 1) overlapped = true;
                seen.push_back(i);
                --running;
            });
        }
    }
    ASSERT_EQ(seen.size(), 10000U);
    for (int i = 0; i < 10000; ++i) ASSERT_EQ(seen[static_cast<std::size_t>(i)], i);
    EXPECT_FALSE(overlapped);
}

TEST(WorkerPool, WorkFromManyThreadsKeepsEachThreadsOrder) {
    constexpr int threadCount = 4;
    constexpr int each = 2000;
    std::vector<std::pair<int, int>> seen;
    {
        WorkerPool pool(4);
        const auto queue = pool.makeSerialQueue("q");
        std::vector<std::thread> threads;
        for (int t = 0; t < threadCount; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; i < each; ++i) queue->async([&, t, i] { seen.emplace_back(t, i); });
            });
        }
        for (std::thread& thread : threads) thread.join();
    }
    ASSERT_EQ(seen.size(), static_cast<std::size_t>(threadCount * each));
    std::vector<int> next(threadCount, 0);
    for (const auto& [thread, number] : seen) ASSERT_EQ(number, next[static_cast<std::size_t>(thread)]++);
}

TEST(WorkerPool, AQueueThatHangsHoldsUpNoOther) {
    WorkerPool pool(2);
    const auto hanging = pool.makeSerialQueue("hanging");
    const auto other = pool.makeSerialQueue("other");
    std::promise<void> release;
    std::promise<void> done;
    hanging->async([&] { release.get_future().wait(); });
    other->async([&] { done.set_value(); });
    EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
    release.set_value();
}

TEST(WorkerPool, OneQueueNeedsOneThreadAndNoWorkNone) {
    std::atomic<int> started = 0;
    {
        WorkerPool pool(4, [&] { ++started; });
        const auto queue = pool.makeSerialQueue("busy");
        const auto quiet = pool.makeSerialQueue("quiet");
        EXPECT_EQ(started, 0);
        for (int round = 0; round < 200; ++round) {
            std::promise<void> done;
            queue->async([&] { done.set_value(); });
            done.get_future().wait();
        }
    }
    EXPECT_EQ(started, 1);
}

TEST(WorkerPool, TheThreadThatWorkedLastWorksNext) {
    WorkerPool pool(2);
    const auto queue = pool.makeSerialQueue("q");
    const auto other = pool.makeSerialQueue("other");
    const auto runOn = [](SerialQueue& on) {
        std::promise<std::thread::id> ran;
        on.async([&] { ran.set_value(std::this_thread::get_id()); });
        return ran.get_future().get();
    };
    std::promise<void> release;
    queue->async([&] { release.get_future().wait(); });
    const std::thread::id second = runOn(*other);
    release.set_value();
    ASSERT_NE(runOn(*queue), second);

    int changes = 0;
    std::thread::id last = runOn(*queue);
    for (int round = 0; round < 200; ++round) changes += std::exchange(last, runOn(*queue)) != last ? 1 : 0;
    EXPECT_LE(changes, 2);  // while the other thread was still becoming idle
}

TEST(WorkerPool, NeverStartsMoreThreadsThanAllowed) {
    std::atomic<int> started = 0;
    std::atomic<int> ran = 0;
    {
        WorkerPool pool(3, [&] { ++started; });
        for (int i = 0; i < 100; ++i) pool.makeSerialQueue("q")->async([&] { ++ran; });
    }
    EXPECT_EQ(ran, 100);
    EXPECT_LE(started, 3);
}

TEST(WorkerPool, DroppingAQueueLosesNoWork) {
    std::atomic<int> ran = 0;
    {
        WorkerPool pool(1);
        auto queue = pool.makeSerialQueue("q");
        for (int i = 0; i < 100; ++i) queue->async([&] { ++ran; });
        queue.reset();
    }
    EXPECT_EQ(ran, 100);
}

TEST(WorkerPool, WorkMayHandInWorkAndDropItsOwnQueue) {
    std::atomic<int> ran = 0;
    {
        WorkerPool pool(2);
        auto queue = std::make_shared<std::shared_ptr<SerialQueue>>(pool.makeSerialQueue("q"));
        (*queue)->async([&ran, queue] {
            (*queue)->async([&ran] { ++ran; });
            queue->reset();
            ++ran;
        });
    }
    EXPECT_EQ(ran, 2);
}

TEST(WorkerPool, FinishingTwiceIsFinishingOnce) {
    std::atomic<int> ran = 0;
    WorkerPool pool(2);
    const auto queue = pool.makeSerialQueue("q");
    queue->async([&] { ++ran; });
    pool.finish();
    EXPECT_EQ(ran, 1);
    queue->async([&] { ++ran; });
    pool.finish();
    EXPECT_EQ(ran, 1);
}

TEST(WorkerPool, AQueueMayOutliveThePool) {
    std::optional<WorkerPool> pool(std::in_place, 1);
    const auto queue = pool->makeSerialQueue("q");
    pool.reset();
    auto witness = std::make_shared<int>(0);
    queue->async([witness] { FAIL() << "the pool has ended"; });
    EXPECT_EQ(witness.use_count(), 1) << "dropped work is not kept";
}

TEST(WorkerPool, AClosureEndsOnceItHasRun) {
    WorkerPool pool(1);
    const auto queue = pool.makeSerialQueue("q");
    auto witness = std::make_shared<int>(0);
    queue->async([kept = witness] {});
    std::promise<void> done;
    queue->async([&] { done.set_value(); });
    done.get_future().wait();
    EXPECT_EQ(witness.use_count(), 1);
}

/// The whole road of a value: work on a queue, posted to the main thread, published there, its handle dropped
/// on another thread meanwhile. It is here for ThreadSanitizer.
TEST(WorkerPool, ValuesReachTheMainThreadWhileHandlesAreDroppedElsewhere) {
    test::ManualRunLoop loop;
    Published<std::string> text("start");
    std::size_t delivered = 0;
    {
        WorkerPool pool(3);
        const auto producer = pool.makeSerialQueue("producer");
        const auto dropper = pool.makeSerialQueue("dropper");
        for (int i = 0; i < 500; ++i) {
            producer->async([&, i] { loop.post([&, i] { text.set(std::to_string(i)); }); });
            auto handle =
                std::make_shared<Cancellable>(text.subscribe([&](const std::string&) { ++delivered; }));
            dropper->async([handle = std::move(handle)]() mutable { handle->cancel(); });
            loop.runPosted();
        }
    }
    loop.runUntilIdle();
    EXPECT_EQ(text.value(), "499");
    EXPECT_GE(delivered, 500U);
}

TEST(WorkerPool, AQueueWithMuchWorkLetsTheOthersHaveTheirTurn) {
    std::string order;
    std::promise<void> release;
    {
        WorkerPool pool(1);
        const auto busy = pool.makeSerialQueue("busy");
        const auto other = pool.makeSerialQueue("other");
        busy->async([&] { release.get_future().wait(); });
        for (int i = 0; i < 3; ++i) busy->async([&] { order += 'a'; });
        other->async([&] { order += 'b'; });
        release.set_value();
    }
    EXPECT_EQ(order, "baaa");
}

/// Hands in work when it is destroyed.
struct LastWish {
    std::shared_ptr<SerialQueue> queue;
    std::function<void()> work;
    ~LastWish() {
        if (queue) queue->async(std::move(work));
    }
};

TEST(WorkerPool, AClosureMayHandInWorkWhenItEnds) {
    std::promise<void> done;
    WorkerPool pool(1);
    const auto queue = pool.makeSerialQueue("q");
    auto wish = std::make_shared<LastWish>();
    wish->queue = queue;
    wish->work = [&done] { done.set_value(); };
    queue->async([kept = std::move(wish)] {});
    EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST(WorkerPool, WorkThatComesAfterTheLastThreadsEndIsDroppedAndEnds) {
    std::function<void()> afterTheLast;
    WorkerPool pool(1, {}, [&afterTheLast](std::function<void()> body) {
        return startThread([&afterTheLast, body = std::move(body)] {
            body();
            afterTheLast();
        });
    });
    auto queue = pool.makeSerialQueue("q");
    auto witness = std::make_shared<int>(0);
    afterTheLast = [&] { queue->async([witness, queue] { FAIL() << "no thread is left"; }); };
    queue->async([] {});
    pool.finish();
    EXPECT_EQ(witness.use_count(), 1);
    EXPECT_EQ(queue.use_count(), 1) << "a queue that its own work keeps would never end";
}

TEST(WorkerPool, WorkThatHangsIsLeftToItself) {
    struct Gate {
        std::mutex mutex;
        std::condition_variable opens;
        bool isOpen = false;
        bool isPassed = false;
    };
    const auto gate = std::make_shared<Gate>();
    const auto change = [gate](bool Gate::*flag) {
        const std::lock_guard lock(gate->mutex);
        (*gate).*flag = true;
        gate->opens.notify_all();
    };
    std::promise<void> dropped;
    std::shared_ptr<void> witness(nullptr, [&](void*) { dropped.set_value(); });
    {
        WorkerPool pool(2);
        const auto hanging = pool.makeSerialQueue("hanging");
        const auto queue = pool.makeSerialQueue("queue");
        std::atomic<bool> ran = false;
        hanging->async([gate, change] {
            std::unique_lock lock(gate->mutex);
            gate->opens.wait(lock, [&] { return gate->isOpen; });
            lock.unlock();
            change(&Gate::isPassed);
        });
        hanging->async([kept = std::move(witness)] { FAIL() << "what it needs may have ended"; });
        queue->async([&ran] { ran = true; });
        EXPECT_FALSE(pool.finishWithin(std::chrono::milliseconds(50)));
        EXPECT_TRUE(ran);
    }
    change(&Gate::isOpen);
    std::unique_lock lock(gate->mutex);
    EXPECT_TRUE(gate->opens.wait_for(lock, std::chrono::seconds(10), [&] { return gate->isPassed; }));
    lock.unlock();
    dropped.get_future().wait();
}

TEST(WorkerPool, WorkThatEndsInTimeIsWaitedFor) {
    WorkerPool pool(2);
    std::atomic<int> ran = 0;
    const auto queue = pool.makeSerialQueue("queue");
    for (int i = 0; i < 100; ++i) queue->async([&ran] { ++ran; });
    EXPECT_TRUE(pool.finishWithin(std::chrono::seconds(10)));
    EXPECT_EQ(ran, 100);
}

}  // namespace
}  // namespace purlock
