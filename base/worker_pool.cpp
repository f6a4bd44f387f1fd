#include "base/worker_pool.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace purlock {

/// One queue's waiting work; guarded by the workers' mutex. `scheduled` while it stands in the ready list or
/// runs, so that no second thread takes it up.
struct WorkerPool::Tasks {
    std::deque<SerialQueue::Task> waiting;
    bool scheduled = false;
};

class WorkerPool::Workers : public std::enable_shared_from_this<Workers> {
  public:
    Workers(std::size_t maximumThreads, std::function<void()> onThreadStart, ThreadStarter starter)
        : maximumThreads_(maximumThreads),
          onThreadStart_(std::move(onThreadStart)),
          starter_(std::move(starter)) {}

    void add(const std::shared_ptr<Tasks>& tasks, SerialQueue::Task task) {
        Worker* idle = nullptr;
        {
            const std::lock_guard lock(mutex_);
            if (stopped_) return;
            tasks->waiting.push_back(std::move(task));
            if (!std::exchange(tasks->scheduled, true)) {
                ready_.push_back(tasks);
            } else if (!lacksThread_) {
                return;
            }
            if (idle_.empty()) {
                start();
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
                std::unique_lock lock(mutex_);
                if (joined == workers_.size()) {
                    stop(lock);
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
        for (Worker& worker : workers_) {
            if (worker.thread.joinable()) worker.thread.detach();
        }
        stop(lock);
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
        if (lacksThread_) start();
        for (Worker* idle : std::exchange(idle_, {})) {
            idle->isWoken = true;
            idle->wake.notify_one();
        }
    }

    /// Nothing runs any more but what runs now. Closures end without the mutex: they may hand in work.
    void stop(std::unique_lock<std::mutex>& lock) {
        stopped_ = true;
        std::vector<SerialQueue::Task> dropped;
        for (const auto& tasks : std::exchange(ready_, {})) take(*tasks, dropped);
        lock.unlock();
    }

    static void take(Tasks& tasks, std::vector<SerialQueue::Task>& dropped) {
        for (auto& task : std::exchange(tasks.waiting, {})) dropped.push_back(std::move(task));
    }

    /// A thread keeps the workers: it may be left to itself.
    void start() {
        if (workers_.size() == maximumThreads_) return;
        Worker& worker = workers_.emplace_back();
        auto thread = starter_([self = shared_from_this(), &worker] { self->run(worker); });
        lacksThread_ = !thread;
        if (thread) {
            worker.thread = std::move(*thread);
        } else {
            workers_.pop_back();
        }
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
        if (stopped_) {
            std::vector<SerialQueue::Task> dropped;
            take(*tasks, dropped);
            lock.unlock();
            dropped.clear();
            lock.lock();
        } else if (tasks->waiting.empty()) {
            tasks->scheduled = false;
        } else {
            ready_.push_back(tasks);
        }
    }

    const std::size_t maximumThreads_;
    const std::function<void()> onThreadStart_;
    const ThreadStarter starter_;
    std::mutex mutex_;
    std::deque<std::shared_ptr<Tasks>> ready_;
    std::deque<Worker> workers_;
    std::vector<Worker*> idle_;  // the last to become so at the end
    std::condition_variable threadEnded_;
    std::size_t ended_ = 0;
    bool lacksThread_ = false;  // the last one that was asked for was refused
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

WorkerPool::WorkerPool(std::size_t maximumThreads, std::function<void()> onThreadStart, ThreadStarter starter)
    : workers_(std::make_shared<Workers>(maximumThreads, std::move(onThreadStart), std::move(starter))) {}

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
