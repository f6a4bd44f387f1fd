#include "platform/linux/toolkit/qt_run_loop.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <algorithm>
#include <utility>

namespace purlock::host_linux {

namespace {

/// How often a turn looks for what its tasks have posted. Tasks that post each other for ever would otherwise
/// keep the windows from being drawn.
constexpr int mostRounds = 16;

constexpr std::chrono::milliseconds longestTimer = std::chrono::hours(24);

}  // namespace

/// Where Qt's loop delivers its timer and the calls to wake up. On the main thread.
class QtRunLoop::Receiver final : public QObject {
  public:
    explicit Receiver(QtRunLoop& loop) : loop_(loop) {}

    /// Fires no earlier than after the delay, or after a day if that is sooner.
    void startTimer(std::chrono::nanoseconds delay) {
        const auto whole = std::chrono::ceil<std::chrono::milliseconds>(delay);
        const auto kept = std::clamp(whole, std::chrono::milliseconds(0), longestTimer);
        timer_.start(static_cast<int>(kept.count()), Qt::PreciseTimer, this);
    }
    void stopTimer() { timer_.stop(); }

    bool event(QEvent* event) override {
        if (event->type() == QEvent::Timer) {
            loop_.timerFired();
        } else if (event->type() == QEvent::User) {
            loop_.turn();
        } else {
            return QObject::event(event);
        }
        return true;
    }

  private:
    QtRunLoop& loop_;
    QBasicTimer timer_;
};

QtRunLoop::QtRunLoop() : receiver_(std::make_unique<Receiver>(*this)) {}

QtRunLoop::~QtRunLoop() = default;

void QtRunLoop::post(Task task) {
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(task));
        if (std::exchange(isAwake_, true)) return;
    }
    wake();  // outside the lock: Qt takes its own
}

void QtRunLoop::wake() {
    QCoreApplication::postEvent(receiver_.get(), new QEvent(QEvent::User));
}

Cancellable QtRunLoop::postDelayed(std::chrono::milliseconds delay, Task task) {
    auto handle = waiting_.add(std::chrono::steady_clock::now() + delay, std::nullopt, std::move(task));
    if (!isTurning_) setTimer();
    return handle;
}

Cancellable QtRunLoop::postDelayedWithTolerance(std::chrono::milliseconds delay,
                                                std::chrono::milliseconds tolerance, Task task) {
    auto handle = waiting_.addTolerant(std::chrono::steady_clock::now() + delay, tolerance, std::move(task));
    if (!isTurning_) setTimer();
    return handle;
}

Cancellable QtRunLoop::repeat(std::chrono::milliseconds interval, Task task) {
    auto handle = waiting_.add(std::chrono::steady_clock::now() + interval, interval, std::move(task));
    if (!isTurning_) setTimer();
    return handle;
}

void QtRunLoop::timerFired() {
    receiver_->stopTimer();  // one of Qt's goes on by itself
    timerDue_.reset();
    turn();
}

void QtRunLoop::turn() {
    isTurning_ = true;
    {
        const std::lock_guard lock(mutex_);
        isAwake_ = true;
    }
    waiting_.run(std::chrono::steady_clock::now());
    int rounds = 0;
    while (rounds < mostRounds && runPosted()) ++rounds;
    if (rounds == mostRounds) wake();
    isTurning_ = false;
    setTimer();
}

/// True if there was any work. When there was none, the next to be posted wakes the loop.
bool QtRunLoop::runPosted() {
    std::vector<Task> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(posted_);
        isAwake_ = !tasks.empty();
    }
    for (const Task& task : tasks) task();
    return !tasks.empty();
}

/// Has Qt's timer fire when the next task is due.
void QtRunLoop::setTimer() {
    const auto due = waiting_.nextDue();
    if (due == timerDue_) return;
    timerDue_ = due;
    if (!due) {
        receiver_->stopTimer();
        return;
    }
    receiver_->startTimer(*due - std::chrono::steady_clock::now());
}

}  // namespace purlock::host_linux
