#include "platform/linux/dbus/bus_thread.h"

#include <pthread.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>

#include <condition_variable>
#include <optional>

#include "base/thread_start.h"

namespace purlock::host_linux {

namespace {

/// Signals are for the main thread; a thread inherits the mask of the one that starts it.
std::optional<std::thread> startWithoutSignals(std::function<void()> body) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    auto thread = startThread(std::move(body));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace

void BusThread::EventDeleter::operator()(sd_event* event) const {
    sd_event_unref(event);
}

void BusThread::SourceDeleter::operator()(sd_event_source* source) const {
    sd_event_source_disable_unref(source);
}

BusThread::BusThread() {
    sd_event* event = nullptr;
    if (sd_event_new(&event) < 0) return;
    event_.reset(event);
    if (openWakeUp() && startLoop()) return;
    wakeUpSource_.reset();
    event_.reset();
}

BusThread::~BusThread() {
    if (!thread_.joinable()) return;
    post([this] { sd_event_exit(event_.get(), 0); });
    thread_.join();
    runPosted();  // what was posted while the loop ended
}

bool BusThread::startLoop() {
    auto thread = startWithoutSignals([this] {
        pthread_setname_np(pthread_self(), "purlock-bus");
        sd_event_loop(event_.get());
    });
    if (!thread) return false;
    thread_ = std::move(*thread);
    return true;
}

bool BusThread::openWakeUp() {
    wakeUp_ = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wakeUp_) return false;
    sd_event_source* source = nullptr;
    if (sd_event_add_io(event_.get(), &source, wakeUp_.get(), EPOLLIN, &BusThread::onWakeUp, this) < 0) {
        return false;
    }
    wakeUpSource_.reset(source);
    return true;
}

void BusThread::post(Task task) {
    const std::lock_guard lock(mutex_);
    if (wakeUpSource_ == nullptr) return;
    posted_.push_back(std::move(task));
    if (posted_.size() == 1) eventfd_write(wakeUp_.get(), 1);
}

bool BusThread::isCurrent() const {
    return std::this_thread::get_id() == thread_.get_id();
}

void BusThread::runAndWait(const Task& task) {
    if (isCurrent() || !thread_.joinable()) {
        task();
        return;
    }
    std::mutex mutex;
    std::condition_variable done;
    bool hasRun = false;
    post([&] {
        task();
        const std::lock_guard lock(mutex);
        hasRun = true;
        done.notify_one();
    });
    std::unique_lock lock(mutex);
    done.wait(lock, [&] { return hasRun; });
}

void BusThread::runPosted() {
    std::vector<Task> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(posted_);
    }
    for (Task& task : tasks) {
        task();
        task = nullptr;  // what the closure owned ends before the next one runs
    }
}

int BusThread::onWakeUp(sd_event_source*, int descriptor, unsigned, void* self) {
    eventfd_t count = 0;
    eventfd_read(descriptor, &count);
    static_cast<BusThread*>(self)->runPosted();
    return 0;
}

void BusTimer::start(std::chrono::milliseconds delay, BusThread::Task task) {
    constexpr std::uint64_t accuracy =
        1000;  // µs; the default of 250 ms would let wake-ups come that much too late
    source_.reset();
    task_ = std::move(task);
    const auto microseconds = static_cast<std::uint64_t>(std::chrono::microseconds(delay).count());
    sd_event_source* source = nullptr;
    if (sd_event_add_time_relative(thread_.event(), &source, CLOCK_MONOTONIC, microseconds, accuracy,
                                   &BusTimer::onTime, this) >= 0) {
        source_.reset(source);
    }
}

int BusTimer::onTime(sd_event_source*, std::uint64_t, void* self) {
    auto* timer = static_cast<BusTimer*>(self);
    const BusThread::Task task = std::move(timer->task_);
    timer->source_.reset();
    task();  // may start the timer again, or destroy it
    return 0;
}

BusInput::BusInput(BusThread& thread, int descriptor, BusThread::Task task) : task_(std::move(task)) {
    sd_event_source* source = nullptr;
    const auto run = [](sd_event_source*, int, std::uint32_t, void* self) {
        static_cast<BusInput*>(self)->task_();
        return 0;
    };
    if (sd_event_add_io(thread.event(), &source, descriptor, EPOLLIN, run, this) >= 0) source_.reset(source);
}

}  // namespace purlock::host_linux
