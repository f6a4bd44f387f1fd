#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "base/serial_queue.h"
#include "base/thread_start.h"

namespace purlock {

/// Serial queues over a few shared threads.
///
/// A thread is started when work arrives and none is idle, up to `maximumThreads`: queues that work in turn
/// share one thread and its wake-ups, and a queue that hangs in a disk write does not hold up another. Queues
/// may outlive the pool; work handed in after the pool's end is dropped.
///
/// When the system refuses a thread, the work waits for a thread that runs already. Each later piece of work,
/// and the end, ask for the thread again. Work that still has no thread at the end is dropped.
class WorkerPool final : public SerialQueueFactory {
  public:
    /// Runs `body` on a new thread; absent, without running it, when there is none to be had.
    using ThreadStarter = std::function<std::optional<std::thread>(std::function<void()> body)>;

    /// `maximumThreads` is at least 1. `onThreadStart` runs first on each new thread; a host names the thread
    /// with it.
    explicit WorkerPool(std::size_t maximumThreads, std::function<void()> onThreadStart = {},
                        ThreadStarter starter = startThread);

    /// As `finish`.
    ~WorkerPool() override;

    /// Runs everything that was handed in and ends the threads; what is handed in later is dropped. Must not
    /// run on one of them.
    void finish();

    /// The same for work that may hang, as with a disk that does not answer: after `limit` the work that runs
    /// is left to itself, and must not need anything that ends now. The work behind it is dropped. Returns
    /// whether all of the threads have ended.
    bool finishWithin(std::chrono::milliseconds limit);

    std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override;

  private:
    struct Tasks;
    class Workers;
    class Queue;

    std::shared_ptr<Workers> workers_;
};

}  // namespace purlock
