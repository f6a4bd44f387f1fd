#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "base/cancellable.h"

namespace purlock::host_linux {

/// Tasks with the moment at which each is due. Belongs to the thread that makes it; only handles go
/// elsewhere.
///
/// A task whose handle was dropped is never run. It is forgotten at once when that happens on the owner's
/// thread, and otherwise at its moment, so that what it holds always ends on the owner's thread.
class DueTasks {
  public:
    using Task = std::function<void()>;
    using Moment = std::chrono::steady_clock::time_point;
    using Interval = std::chrono::milliseconds;

    /// To be run at `due`, and when there is an interval, again and again after that.
    Cancellable add(Moment due, std::optional<Interval> interval, Task task);

    /// To be run once, between `due` and `tolerance` later.
    Cancellable addTolerant(Moment due, Interval tolerance, Task task);

    /// When `run` must be called at the latest. Absent when nothing is waiting.
    std::optional<Moment> nextDue() const;

    /// Runs what is due by `now`, in order, each task once; one that was late by several intervals too. Tasks
    /// may add others and drop any handle.
    void run(Moment now);

  private:
    using Key = std::pair<Moment, std::uint64_t>;  // of two that are due at once, the elder comes first
    struct Waiting {
        Task task;
        std::optional<Interval> interval;
        Interval tolerance;
        std::weak_ptr<Key> key;  // expires with the handle
    };
    using Queue = std::map<Key, Waiting>;

    Cancellable insert(Moment due, Waiting waiting);
    void runOne(Queue::node_type node, Moment now);

    const std::shared_ptr<Queue> queue_ = std::make_shared<Queue>();
    const std::thread::id thread_ = std::this_thread::get_id();
    std::uint64_t added_ = 0;
};

}  // namespace purlock::host_linux
