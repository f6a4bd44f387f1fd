#pragma once

#include <memory>
#include <string>
#include <utility>

#include "base/run_loop.h"
#include "base/serial_queue.h"

namespace purlock {

/// Serial queues whose work runs on the main thread, as turns of its loop: for work that is short, waits for
/// nothing and ends on the main thread in any case, so that it wakes no other thread on its way.
///
/// Nobody may use a queue once the run loop has ended. Work that the loop no longer gets to is dropped.
class RunLoopQueues final : public SerialQueueFactory {
  public:
    explicit RunLoopQueues(RunLoop& loop) : loop_(loop) {}

    std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override {
        return std::make_shared<Queue>(loop_, std::move(label));
    }

  private:
    class Queue final : public SerialQueue {
      public:
        Queue(RunLoop& loop, std::string label) : loop_(loop), label_(std::move(label)) {}

        void async(Task task) override { loop_.post(std::move(task)); }
        const std::string& label() const override { return label_; }

      private:
        RunLoop& loop_;
        const std::string label_;
    };

    RunLoop& loop_;
};

}  // namespace purlock
