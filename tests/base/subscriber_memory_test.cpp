// clang's ThreadSanitizer counts blocks of memory itself and lets nobody else do it. There is one thread
// here.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define PURLOCK_CANNOT_COUNT_BLOCKS
#endif
#endif
#ifndef PURLOCK_CANNOT_COUNT_BLOCKS

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "base/published.h"

namespace {

std::atomic<long> liveBlocks = 0;

}  // namespace

// This test program counts its blocks of memory: a subscription that nobody has shows in nothing else.

void* operator new(std::size_t size) {
    void* const block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) throw std::bad_alloc();
    ++liveBlocks;
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) --liveBlocks;
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    operator delete(block);
}

namespace purlock {
namespace {

constexpr long few = 50;

TEST(SubscriberMemory, DroppedHandlesOfAPublishedValueLeaveNothing) {
    Published<int> number(0);
    const long before = liveBlocks;
    for (int i = 0; i < 10'000; ++i) number.subscribe([](int) {}).cancel();
    EXPECT_LT(liveBlocks - before, few);
}

TEST(SubscriberMemory, DroppedHandlesOfASignalLeaveNothing) {
    const Signal signal;
    const long before = liveBlocks;
    for (int i = 0; i < 10'000; ++i) signal.subscribe([] {}).cancel();
    EXPECT_LT(liveBlocks - before, few);
}

TEST(SubscriberMemory, AnEventForgetsDroppedHandlesAlsoAfterAnException) {
    Signal signal;
    Cancellable throwing = signal.subscribe([] { throw 1; });
    EXPECT_ANY_THROW(signal.fire());
    throwing.cancel();
    const long before = liveBlocks;
    for (int i = 0; i < 10'000; ++i) {
        signal.subscribe([] {}).cancel();
        signal.fire();
    }
    EXPECT_LT(liveBlocks - before, few);
}

}  // namespace
}  // namespace purlock

#endif
