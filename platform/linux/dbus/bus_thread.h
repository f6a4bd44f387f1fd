#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/system/file_descriptor.h"

struct sd_event;
struct sd_event_source;

namespace purlock::host_linux {

/// The one thread on which every D-Bus connection of the host is served, so that no other thread ever waits
/// for a bus.
///
/// Owned by the host; everything that lives on the thread (connections, timers) ends before it. While nothing
/// arrives the thread sleeps without a wake-up. When the system refuses the loop's descriptors or the thread,
/// it stays lifeless: posted work is dropped and no bus is ever connected.
class BusThread {
  public:
    using Task = std::function<void()>;

    BusThread();

    /// Runs what was posted so far and ends the thread. Not on the thread itself.
    ~BusThread();
    BusThread(const BusThread&) = delete;
    BusThread& operator=(const BusThread&) = delete;

    /// Runs `task` on the thread, in the order of the calls and never before this call has returned. Any
    /// thread.
    void post(Task task);

    /// Runs `task` on the thread and returns when it has run; on the thread itself, at once. For setting up
    /// and tearing down: nothing on the thread waits, so this takes no longer than the work that is already
    /// queued.
    void runAndWait(const Task& task);

    bool isCurrent() const;

    /// The same for its whole life.
    bool isLifeless() const { return event_ == nullptr; }

    /// The loop; null when lifeless. On the thread only.
    sd_event* event() const { return event_.get(); }

  private:
    struct EventDeleter {
        void operator()(sd_event* event) const;
    };
    struct SourceDeleter {
        void operator()(sd_event_source* source) const;
    };
    friend class BusTimer;
    friend class BusInput;

    bool openWakeUp();
    bool startLoop();
    void runPosted();
    static int onWakeUp(sd_event_source* source, int descriptor, unsigned events, void* self);

    std::unique_ptr<sd_event, EventDeleter> event_;
    FileDescriptor wakeUp_;
    std::unique_ptr<sd_event_source, SourceDeleter> wakeUpSource_;
    std::mutex mutex_;
    std::vector<Task> posted_;  // guarded by mutex_
    std::thread thread_;
};

/// A one-shot timer on the bus thread, for its owner's use there. Dropping it stops it.
class BusTimer {
  public:
    explicit BusTimer(BusThread& thread) : thread_(thread) {}

    /// Runs `task` once, `delay` from now; an earlier task that has not run yet is forgotten.
    void start(std::chrono::milliseconds delay, BusThread::Task task);
    void stop() { source_.reset(); }
    bool running() const { return source_ != nullptr; }

  private:
    static int onTime(sd_event_source* source, std::uint64_t now, void* self);

    BusThread& thread_;
    BusThread::Task task_;
    std::unique_ptr<sd_event_source, BusThread::SourceDeleter> source_;
};

/// Runs a task whenever a descriptor, which stays its owner's, is readable. Made, used and dropped on the bus
/// thread, before the descriptor is closed; dropping it stops it.
class BusInput {
  public:
    BusInput(BusThread& thread, int descriptor, BusThread::Task task);
    BusInput(const BusInput&) = delete;
    BusInput& operator=(const BusInput&) = delete;

  private:
    const BusThread::Task task_;
    std::unique_ptr<sd_event_source, BusThread::SourceDeleter> source_;
};

/// An object that lives on the bus thread: made there soon after this is made, destroyed there before this is
/// gone.
///
/// Any thread but the bus thread makes and drops it; `post` hands work to the object.
template <typename T>
class OnBusThread {
  public:
    /// `make` returns a std::unique_ptr<T>.
    template <typename Make>
    OnBusThread(BusThread& thread, Make make) : thread_(thread) {
        thread_.post([object = object_, make = std::move(make)] { *object = make(); });
    }
    ~OnBusThread() {
        thread_.runAndWait([this] { object_->reset(); });
    }
    OnBusThread(const OnBusThread&) = delete;
    OnBusThread& operator=(const OnBusThread&) = delete;

    /// Runs `work(T&)` on the bus thread, unless the object is gone by then. Any thread.
    template <typename Work>
    void post(Work work) {
        thread_.post([object = object_, work = std::move(work)] {
            if (*object) work(**object);
        });
    }

  private:
    BusThread& thread_;
    const std::shared_ptr<std::unique_ptr<T>> object_ = std::make_shared<std::unique_ptr<T>>();
};

}  // namespace purlock::host_linux
