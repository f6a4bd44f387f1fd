#include "tests/macos/simulated/dispatch.h"

#include <dispatch/dispatch.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace purlock::simulated {

namespace {

struct Queue {
    std::atomic<long> references{1};
    std::shared_ptr<SerialQueue> target;
    const Dispatch* maker = nullptr;
};

// What holds just now: the innermost Dispatch, and the queues that are held.
Dispatch* current = nullptr;
std::mutex mutex;
std::set<const void*> live;

thread_local int pools = 0;

// Timers keep going without a handle; these do not, so their handles are kept here.
std::vector<Cancellable> delayed;

Queue& checked(const void* queue) {
    const std::lock_guard lock(mutex);
    if (!live.contains(queue)) {
        std::fprintf(stderr, "dispatch: a queue that is gone, or never was (%p)\n", queue);
        std::abort();
    }
    return *static_cast<Queue*>(const_cast<void*>(queue));
}

/// Queued work comes back exactly once; what is never run is reported as a leak by the sanitizer.
auto calling(void* context, dispatch_function_t work) {
    return [context, work] { work(context); };
}

}  // namespace

// The main queue is an object of its own, which nobody creates or releases.
extern "C" char simulatedMainQueue asm("_dispatch_main_q");
char simulatedMainQueue = 0;

Dispatch::Dispatch(SerialQueueFactory& queues, RunLoop* mainLoop)
    : queues_(queues), mainLoop_(mainLoop), outer_(std::exchange(current, this)) {}

Dispatch::~Dispatch() {
    current = outer_;
    delayed.clear();
}

std::size_t Dispatch::liveQueues() {
    const std::lock_guard lock(mutex);
    return live.size();
}

std::size_t Dispatch::ownLiveQueues() const {
    const std::lock_guard lock(mutex);
    std::size_t count = 0;
    for (const void* const queue : live) count += static_cast<const Queue*>(queue)->maker == this ? 1U : 0U;
    return count;
}

int openPools() {
    return pools;
}

std::shared_ptr<SerialQueue> targetOf(const void* dispatchQueue) {
    return checked(dispatchQueue).target;
}

}  // namespace purlock::simulated

using namespace purlock::simulated;

extern "C" {

// Where no Objective-C runtime is linked, pools are counted.
__attribute__((weak)) void* objc_autoreleasePoolPush() {
    ++pools;
    return &pools;
}

__attribute__((weak)) void objc_autoreleasePoolPop(void* /*pool*/) {
    --pools;
}

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attr) {
    if (attr != DISPATCH_QUEUE_SERIAL || current == nullptr) std::abort();
    auto* const queue = new Queue;
    queue->target = current->queues().makeSerialQueue(label);
    queue->maker = current;
    const std::lock_guard lock(mutex);
    live.insert(queue);
    return reinterpret_cast<dispatch_queue_t>(queue);
}

void dispatch_retain(dispatch_object_t object) {
    ++checked(object).references;
}

void dispatch_release(dispatch_object_t object) {
    Queue& queue = checked(object);
    if (--queue.references > 0) return;
    {
        const std::lock_guard lock(mutex);
        live.erase(object);
    }
    delete &queue;
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
    if (queue == dispatch_get_main_queue()) {
        current->mainLoop()->post(calling(context, work));
    } else {
        checked(queue).target->async(calling(context, work));
    }
}

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta) {
    if (when != DISPATCH_TIME_NOW) std::abort();
    return static_cast<dispatch_time_t>(delta);  // a time of this simulation is a delay
}

void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context, dispatch_function_t work) {
    if (queue != dispatch_get_main_queue()) std::abort();
    const auto delay = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::nanoseconds(when));
    delayed.push_back(current->mainLoop()->postDelayed(delay, calling(context, work)));
}
}
