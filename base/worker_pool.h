#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/serial_queue.h"

namespace purlock {

/// Serial queues over a few shared threads.
///
/// A thread is started when work arrives and none is idle, up to `maximumThreads`: queues that work in turn
/// share one thread and its wake-ups, and a queue that hangs in a disk write does not hold up another. Queues
/// may outlive the pool; work handed in after the pool's end is dropped.
class WorkerPool final : public SerialQueueFactory {
  public:
    /// `onThreadStart` runs first on each new thread; a host names the thread with it.
    explicit WorkerPool(std::size_t maximumThreads, std::function<void()> onThreadStart = {});

    /// As `finish`.
    ~WorkerPool() override;

    /// Runs everything that was handed in and ends the threads; what is handed in later is dropped. Must not
    /// run on one of them.
    void finish();

    /// The same for work that may hang, as with a disk that does not answer: after `limit` it is left to
    /// itself, and must not need anything that ends now. Whether everything has run.
    bool finishWithin(std::chrono::milliseconds limit);

    std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override;

  private:
    struct Tasks;
    class Workers;
    class Queue;

    std::shared_ptr<Workers> workers_;
};

}  // namespace purlock
