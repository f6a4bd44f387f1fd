#include "base/worker_pool.h"

#include <utility>

namespace purlock {

/// One queue's waiting work; guarded by the workers' mutex. `scheduled` while it stands in the ready list or
/// runs, so that no second thread takes it up.
struct WorkerPool::Tasks {
    std::deque<SerialQueue::Task> waiting;
    bool scheduled = false;
};

class WorkerPool::Workers : public std::enable_shared_from_this<Workers> {
  public:
    Workers(std::size_t maximumThreads, std::function<void()> onThreadStart)
        : maximumThreads_(maximumThreads), onThreadStart_(std::move(onThreadStart)) {}

    void add(const std::shared_ptr<Tasks>& tasks, SerialQueue::Task task) {
        Worker* idle = nullptr;
        {
            const std::lock_guard lock(mutex_);
            if (stopped_) return;
            tasks->waiting.push_back(std::move(task));
            if (std::exchange(tasks->scheduled, true)) return;
            ready_.push_back(tasks);
            if (idle_.empty()) {
                if (workers_.size() < maximumThreads_) start();
                return;
            }
            // The one that has worked last: its stack is still in the processor's caches.
            idle = idle_.back();
            idle_.pop_back();
            idle->isWoken = true;
        }
        idle->wake.notify_one();  // without the mutex, which the woken thread would else wait for
    }

    void finish() {
        beginToFinish();
        // A task may still hand in work that starts another thread, so the list can grow while it is joined.
        for (std::size_t joined = 0;; ++joined) {
            std::thread thread;
            {
                const std::lock_guard lock(mutex_);
                if (joined == workers_.size()) {
                    stopped_ = true;
                    return;
                }
                thread = std::move(workers_[joined].thread);  // already joined if this is not the first time
            }
            if (thread.joinable()) thread.join();
        }
    }

    bool finishWithin(std::chrono::milliseconds limit) {
        beginToFinish();
        std::unique_lock lock(mutex_);
        if (threadEnded_.wait_for(lock, limit, [this] { return ended_ == workers_.size(); })) {
            lock.unlock();
            finish();
            return true;
        }
        stopped_ = true;
        for (Worker& worker : workers_) {
            if (worker.thread.joinable()) worker.thread.detach();
        }
        return false;
    }

  private:
    struct Worker {
        std::thread thread;
        std::condition_variable wake;
        bool isWoken = false;
    };

    void beginToFinish() {
        const std::lock_guard lock(mutex_);
        finishing_ = true;
        for (Worker* idle : std::exchange(idle_, {})) {
            idle->isWoken = true;
            idle->wake.notify_one();
        }
    }

    /// A thread keeps the workers: it may be left to itself.
    void start() {
        Worker& worker = workers_.emplace_back();
        worker.thread = std::thread([self = shared_from_this(), &worker] { self->run(worker); });
    }

    void run(Worker& self) {
        if (onThreadStart_) onThreadStart_();
        std::unique_lock lock(mutex_);
        for (;;) {
            while (!ready_.empty()) runOne(lock);
            if (finishing_) {
                ++ended_;
                threadEnded_.notify_all();
                return;
            }
            self.isWoken = false;
            idle_.push_back(&self);
            self.wake.wait(lock, [&self] { return self.isWoken; });
        }
    }

    void runOne(std::unique_lock<std::mutex>& lock) {
        const auto tasks = std::move(ready_.front());
        ready_.pop_front();
        auto task = std::move(tasks->waiting.front());
        tasks->waiting.pop_front();
        lock.unlock();
        task();
        task = nullptr;  // what the closure owned ends here, outside the lock
        lock.lock();
        if (tasks->waiting.empty()) {
            tasks->scheduled = false;
        } else {
            ready_.push_back(tasks);
        }
    }

    const std::size_t maximumThreads_;
    const std::function<void()> onThreadStart_;
    std::mutex mutex_;
    std::deque<std::shared_ptr<Tasks>> ready_;
    std::deque<Worker> workers_;
    std::vector<Worker*> idle_;  // the last to become so at the end
    std::condition_variable threadEnded_;
    std::size_t ended_ = 0;
    bool finishing_ = false;
    bool stopped_ = false;
};

class WorkerPool::Queue final : public SerialQueue {
  public:
    Queue(std::shared_ptr<Workers> workers, std::string label)
        : workers_(std::move(workers)), label_(std::move(label)) {}

    void async(Task task) override { workers_->add(tasks_, std::move(task)); }
    const std::string& label() const override { return label_; }

  private:
    const std::shared_ptr<Workers> workers_;
    const std::string label_;
    const std::shared_ptr<Tasks> tasks_ = std::make_shared<Tasks>();
};

WorkerPool::WorkerPool(std::size_t maximumThreads, std::function<void()> onThreadStart)
    : workers_(std::make_shared<Workers>(maximumThreads, std::move(onThreadStart))) {}

WorkerPool::~WorkerPool() {
    finish();
}

void WorkerPool::finish() {
    workers_->finish();
}

bool WorkerPool::finishWithin(std::chrono::milliseconds limit) {
    return workers_->finishWithin(limit);
}

std::shared_ptr<SerialQueue> WorkerPool::makeSerialQueue(std::string label) {
    return std::make_shared<Queue>(workers_, std::move(label));
}

}  // namespace purlock
