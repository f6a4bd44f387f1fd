#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/serial_queue.h"

namespace purlock::test {

/// A serial queue that runs its work when the test says so, on the test's thread.
class ManualSerialQueue final : public SerialQueue {
  public:
    explicit ManualSerialQueue(std::string label) : label_(std::move(label)) {}

    void async(Task task) override { tasks_.push_back(std::move(task)); }
    const std::string& label() const override { return label_; }

    /// Forgets what is queued.
    void drop() { std::exchange(tasks_, {}).clear(); }

    /// Runs what is queued, and what that queues; returns how many tasks ran.
    std::size_t run() {
        std::size_t count = 0;
        while (runOne()) ++count;
        return count;
    }

    bool runOne() {
        if (tasks_.empty()) return false;
        const Task task = std::move(tasks_.front());
        tasks_.pop_front();
        task();
        return true;
    }

  private:
    const std::string label_;
    std::deque<Task> tasks_;
};

/// Makes manual queues and keeps them, so that a test finds those that its subject made.
class ManualQueues final : public SerialQueueFactory {
  public:
    /// Work that a test leaves queued may own its queue.
    ~ManualQueues() override {
        for (const auto& queue : made_) queue->drop();
    }

    std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override {
        made_.push_back(std::make_shared<ManualSerialQueue>(std::move(label)));
        return made_.back();
    }

    /// The queues made so far, in order.
    const std::vector<std::shared_ptr<ManualSerialQueue>>& made() const { return made_; }

    /// Runs all of them until none has work; returns how many tasks ran.
    std::size_t run() {
        std::size_t total = 0;
        for (std::size_t count = 1; count > 0; total += count) {
            count = 0;
            for (std::size_t i = 0; i < made_.size(); ++i) count += made_[i]->run();
        }
        return total;
    }

  private:
    std::vector<std::shared_ptr<ManualSerialQueue>> made_;
};

}  // namespace purlock::test
