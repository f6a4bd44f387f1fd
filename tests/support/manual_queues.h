#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/serial_queue.h"

namespace purlock::test {

/// A serial queue that runs its work when the test says so, on the test's thread.
class ManualSerialQueue final : public SerialQueue {
  public:
    using OnAsync = std::function<void(const std::string& label)>;

    /// `onAsync` is told of each piece of work when it is handed in.
    explicit ManualSerialQueue(std::string label, OnAsync onAsync = {})
        : label_(std::move(label)), onAsync_(std::move(onAsync)) {}

    void async(Task task) override {
        if (onAsync_) onAsync_(label_);
        tasks_.push_back(std::move(task));
    }
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
    const OnAsync onAsync_;
    std::deque<Task> tasks_;
};

/// Makes manual queues and keeps them, so that a test finds those that its subject made.
class ManualQueues final : public SerialQueueFactory {
  public:
    /// Work that a test leaves queued may own its queue.
    ~ManualQueues() override {
        for (const auto& queue : made_) queue->drop();
    }

    /// Told of each piece of work that comes to any of the queues, in order.
    ManualSerialQueue::OnAsync onAsync;

    std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override {
        made_.push_back(std::make_shared<ManualSerialQueue>(std::move(label), [this](const auto& handedTo) {
            if (onAsync) onAsync(handedTo);
        }));
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
