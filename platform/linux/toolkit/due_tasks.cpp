#include "platform/linux/toolkit/due_tasks.h"

#include <utility>

namespace purlock::host_linux {

Cancellable DueTasks::add(Moment due, std::optional<Interval> interval, Task task) {
    return insert(due, {std::move(task), interval, {}, {}});
}

Cancellable DueTasks::addTolerant(Moment due, Interval tolerance, Task task) {
    return insert(due, {std::move(task), {}, tolerance, {}});
}

Cancellable DueTasks::insert(Moment due, Waiting waiting) {
    const std::shared_ptr<Key> key(new Key(due, ++added_),
                                   [queue = std::weak_ptr(queue_), thread = thread_](Key* dropped) {
                                       const std::unique_ptr<Key> last(dropped);
                                       if (std::this_thread::get_id() != thread) return;
                                       // Out of the queue first: what the task holds may drop handles too.
                                       if (const auto tasks = queue.lock()) tasks->extract(*last);
                                   });
    waiting.key = key;
    queue_->emplace(*key, std::move(waiting));
    return Cancellable(key);
}

std::optional<DueTasks::Moment> DueTasks::nextDue() const {
    std::optional<Moment> latest;
    for (const auto& [key, waiting] : *queue_) {
        const Moment end = key.first + waiting.tolerance;
        if (!latest || end < *latest) latest = end;
    }
    return latest;
}

void DueTasks::run(Moment now) {
    // Tasks that a task adds wait for the next time, even if they are due already.
    const std::uint64_t newest = added_;
    for (auto next = queue_->begin(); next != queue_->end() && next->first.first <= now;
         next = queue_->begin()) {
        if (next->first.second > newest) return;
        runOne(queue_->extract(next), now);
    }
}

void DueTasks::runOne(Queue::node_type node, Moment now) {
    Waiting& waiting = node.mapped();
    if (waiting.key.expired()) return;
    waiting.task();
    const auto key = waiting.key.lock();
    if (!key || !waiting.interval) return;
    const auto missed = (now - node.key().first) / *waiting.interval;
    key->first += *waiting.interval * (missed + 1);
    node.key() = *key;
    queue_->insert(std::move(node));
}

}  // namespace purlock::host_linux
