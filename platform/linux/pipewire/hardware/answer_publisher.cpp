#include "platform/linux/pipewire/hardware/answer_publisher.h"

#include <malloc.h>
#include <pipewire/extensions/profiler.h>
#include <pipewire/impl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <utility>

#include "platform/linux/pipewire/hardware/answer_builder.h"
#include "platform/linux/pipewire/mirror/monotonic_time.h"

namespace purlock::host_linux {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds quietTime = 25ms;
constexpr std::chrono::nanoseconds longestBurst = 100ms;
constexpr std::chrono::nanoseconds longestTransition = 1300ms;

// A check-up wakes this program twice and the server once, so what is hardly ever found is looked for less
// often.
constexpr std::chrono::nanoseconds serverCheckUp = 4s;
constexpr std::chrono::nanoseconds namesCheckUp = 2s;
constexpr std::chrono::nanoseconds cardsCheckUp = 300ms;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

std::string hostName() {
    char name[256] = {};
    return ::gethostname(name, sizeof name - 1) == 0 ? std::string(name) : std::string();
}

}  // namespace

AnswerPublisher::AnswerPublisher(RunningApplications& applications, SoundCards cards,
                                 const std::string& soundDevices)
    : thread_(pw_thread_loop_new("purlock-audio", nullptr)),
      identities_(applications, hostName()),
      nextCheckUp_(never) {
    if (!thread_) return;  // out of descriptors: a hardware layer without devices
    pw_loop* const loop = pw_thread_loop_get_loop(thread_.get());
    context_.reset(pw_context_new(loop, nullptr, 0));
    if (!context_) return;
    // The words of the profiler's protocol; without them its reports cannot be read, and clocks are
    // estimated.
    if (pw_context_load_module(context_.get(), PW_EXTENSION_MODULE_PROFILER, nullptr, nullptr) == nullptr) {
        std::cerr << "PipeWire's profiler module cannot be loaded; clock rates are estimated.\n";
    }
    cards_ = std::make_unique<CardWatch>(loop, std::move(cards), soundDevices, [this] { publish(); });
    quiet_ = std::make_unique<LoopTimer>(loop, [this] { publishIfStable(); });
    checkUp_ = std::make_unique<LoopEvent>(loop, [this] { checkUp(); });
    server_ = std::make_unique<ServerConnection>(
        context_.get(), ServerConnection::Observers{.synced = [this] { synced(); },
                                                    .clocksChanged = [this] { publishWhenQuiet(); },
                                                    .silent = [this] { publish(); },
                                                    .ended = [this] { sessionEnded(); }});
    if (pw_thread_loop_start(thread_.get()) != 0) {
        std::cerr << "The system gives no thread for the audio server; there will be no devices.\n";
    }
}

AnswerPublisher::~AnswerPublisher() {
    if (thread_) pw_thread_loop_stop(thread_.get());
    // The loop's thread has ended, so this thread owns its objects now. The members end in the reverse of
    // their order.
}

const Session* AnswerPublisher::respondingSession() const {
    const Session* const session = server_->session();
    return session != nullptr && session->isResponding() ? session : nullptr;
}

void AnswerPublisher::sessionEnded() {
    identities_.clear();
    publish();
}

void AnswerPublisher::synced() {
    cards_->follow(server_->session()->graph());
    identities_.retain(server_->session()->graph());
    publishWhenQuiet();
}

/// The server tells one change in many steps, a few milliseconds apart; they are told on as one.
void AnswerPublisher::publishWhenQuiet() {
    if (!unpublishedSince_) unpublishedSince_ = monotonicNow();
    if (quiet_->isAble() && monotonicNow() - *unpublishedSince_ < longestBurst / 1ns) {
        quiet_->arm(quietTime);
    } else {
        publishIfStable();
    }
}

void AnswerPublisher::publishIfStable() {
    const bool isPatient = unpublishedSince_ &&
                           monotonicNow() - *unpublishedSince_ < longestTransition / 1ns && quiet_->isAble();
    const Session* const session = server_->session();
    if (isPatient && session != nullptr && session->isInTransition()) {
        quiet_->arm(quietTime);
    } else {
        publish();
    }
}

void AnswerPublisher::publish() {
    unpublishedSince_.reset();
    quiet_->disarm();
    const Session* const session = respondingSession();
    const auto next = session != nullptr
                          ? std::make_shared<const Answers>(buildAnswers(
                                session->graph(), cards_->facts(), server_->number(), identities_, ids_))
                          : std::make_shared<const Answers>();
    const auto before = answers.get();
    answers.set(next);
    planCheckUp();
    listeners.notify(next->changesSince(*before));
    giveBackMemory();
}

/// Hundreds of objects that have gone leave free memory behind.
void AnswerPublisher::giveBackMemory() {
    constexpr std::size_t many = 64;
    const Session* const session = server_->session();
    const std::size_t nodes = session != nullptr ? session->graph().nodes.size() : 0;
    mostNodes_ = std::max(mostNodes_, nodes);
    if (mostNodes_ < many || nodes > mostNodes_ / 2) return;
    mostNodes_ = nodes;
    ::malloc_trim(0);
}

void AnswerPublisher::planCheckUp() {
    const Session* const session = respondingSession();
    const bool plays = session != nullptr && session->graph().isAnyRunning();
    const bool isTaken = session != nullptr && cards_->isAnyTaken();
    if (!plays && !isTaken) {
        nextCheckUp_ = never;
    } else if (nextCheckUp_ == never) {
        const auto distance =
            isTaken ? cardsCheckUp : (identities_.isAnyUnresolved() ? namesCheckUp : serverCheckUp);
        nextCheckUp_ = monotonicNow() + distance / 1ns;
    }
}

void AnswerPublisher::noticeRead() {
    std::int64_t due = nextCheckUp_.load(std::memory_order_relaxed);
    if (due == never) return;
    if (monotonicNow() < due) return;
    // One of the readers asks; the others find that it has been done.
    if (nextCheckUp_.compare_exchange_strong(due, never)) checkUp_->signal();
}

void AnswerPublisher::checkUp() {
    Session* const session = server_->session();
    if (session == nullptr) return;
    session->checkUp();
    if (cards_->read() || identities_.isAnyUnresolved()) {
        publish();
    } else {
        planCheckUp();
    }
}

}  // namespace purlock::host_linux
