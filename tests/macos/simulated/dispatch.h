#pragma once

#include <cstddef>

#include "base/run_loop.h"
#include "base/serial_queue.h"

namespace purlock::simulated {

/// The system's queues, on top of the test's own: while this lives, each dispatch queue that is created hands
/// its work to a queue of `queues`, and the main queue to `mainLoop`. Of two, the later one holds.
class Dispatch {
  public:
    explicit Dispatch(SerialQueueFactory& queues, RunLoop* mainLoop = nullptr);
    ~Dispatch();
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;

    SerialQueueFactory& queues() const { return queues_; }
    RunLoop* mainLoop() const { return mainLoop_; }

    /// The queues that somebody still holds: all, and those that were created while this was the one that
    /// holds.
    static std::size_t liveQueues();
    std::size_t ownLiveQueues() const;

  private:
    SerialQueueFactory& queues_;
    RunLoop* const mainLoop_;
    Dispatch* const outer_;
};

/// The test's queue behind a dispatch queue.
std::shared_ptr<SerialQueue> targetOf(const void* dispatchQueue);

/// How many autorelease pools this thread is in; always 0 where an Objective-C runtime is linked.
int openPools();

}  // namespace purlock::simulated
