#include "platform/linux/desktop/qt_run_loop.h"

#include <QMetaObject>
#include <QTimer>
#include <memory>
#include <utility>

namespace purlock::host_linux {

void QtRunLoop::post(Task task) {
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex_);
        isFirst = posted_.empty();
        posted_.push_back(std::move(task));
    }
    // Outside the lock: Qt takes its own.
    if (isFirst)
        QMetaObject::invokeMethod(
            &context_, [this] { runPosted(); }, Qt::QueuedConnection);
}

void QtRunLoop::runPosted() {
    std::vector<Task> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(posted_);
    }
    for (const Task& task : tasks) task();
}

Cancellable QtRunLoop::postDelayed(std::chrono::milliseconds delay, Task task) {
    return startTimer(delay, false, std::move(task));
}

Cancellable QtRunLoop::repeat(std::chrono::milliseconds interval, Task task) {
    return startTimer(interval, true, std::move(task));
}

Cancellable QtRunLoop::startTimer(std::chrono::milliseconds interval, bool repeating, Task task) {
    // A timer's handle may be dropped on any thread and from within the timer's own task: the timer is
    // stopped at once if that is here, and deleted by the event loop in any case.
    const std::shared_ptr<QTimer> timer(new QTimer, [](QTimer* dropped) { dropped->deleteLater(); });
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeating);
    QObject::connect(timer.get(), &QTimer::timeout, &context_,
                     [weak = std::weak_ptr(timer), kept = std::make_shared<const Task>(std::move(task))] {
                         if (weak.expired()) return;
                         // The task may drop the handle, and with it itself.
                         const auto running = kept;  // NOLINT(performance-unnecessary-copy-initialization)
                         (*running)();
                     });
    timer->start(interval);
    return Cancellable(timer);
}

}  // namespace purlock::host_linux
