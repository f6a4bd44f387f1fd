#include "platform/linux/pipewire/hardware/worker.h"
#include "platform/linux/pipewire/hardware/answer_builder.h"

#include <malloc.h>
#include <pipewire/extensions/profiler.h>
#include <pipewire/impl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <utility>

#include "platform/linux/pipewire/mirror/monotonic_time.h"
#include "platform/linux/pipewire/rules/transition.h"

namespace purlock::host_linux {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds firstDelay = 25ms;
constexpr std::chrono::milliseconds longestDelay = 30s;      // while the socket's folder is watched
constexpr std::chrono::milliseconds longestBlindDelay = 1s;  // while it cannot be
constexpr std::chrono::milliseconds quietTime = 25ms;
constexpr std::chrono::milliseconds doubtLasts = 150ms;
constexpr std::chrono::milliseconds silenceAfterProgram = 5s;
constexpr std::chrono::nanoseconds longestBurst = 100ms;
constexpr std::chrono::nanoseconds longestTransition = 1300ms;

// After a change a graph runs some cycles at its old rate.
constexpr std::chrono::nanoseconds clockSettles = 120ms;

constexpr std::chrono::nanoseconds serverCheckUp = 2s;
constexpr std::chrono::nanoseconds hardwareCheckUp = 300ms;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

std::string hostName() {
    char name[256] = {};
    return ::gethostname(name, sizeof name - 1) == 0 ? std::string(name) : std::string();
}

/// Everything that a graph's clock may follow: who runs at which rate, what is linked, and the settings.
std::string clockInfluences(const AudioGraph& graph) {
    std::string text =
        std::to_string(graph.settings.clockRate) + "/" + std::to_string(graph.settings.forcedRate);
    for (const std::uint32_t rate : graph.settings.allowedRates) text += "," + std::to_string(rate);
    for (const auto& [serial, node] : graph.nodes) {
        if (node.state != NodeState::running) continue;
        text +=
            ";" + std::to_string(serial) + ":" + std::to_string(node.properties.requestedRate.value_or(0));
        if (node.format) text += "@" + std::to_string(node.format->sampleRate);
    }
    for (const auto& [id, link] : graph.links) {
        text += ";" + std::to_string(link.outputNode) + ">" + std::to_string(link.inputNode);
    }
    return text;
}

bool isAnyRunning(const AudioGraph& graph) {
    return std::any_of(graph.nodes.begin(), graph.nodes.end(),
                       [](const auto& each) { return each.second.state == NodeState::running; });
}

}  // namespace

PipeWireHardware::Worker::Worker(RunningApplications& applications, const Places& places)
    : thread_(pw_thread_loop_new("purlock-audio", nullptr)),
      loop_(thread_ ? pw_thread_loop_get_loop(thread_.get()) : nullptr),
      identities_(applications, hostName()),
      nextCheckUp_(never) {
    if (!thread_) return;  // out of descriptors: a hardware layer without devices
    context_.reset(pw_context_new(loop_, nullptr, 0));
    if (!context_) return;
    // The words of the profiler's protocol; without them its reports cannot be read, and clocks are
    // estimated.
    if (pw_context_load_module(context_.get(), PW_EXTENSION_MODULE_PROFILER, nullptr, nullptr) == nullptr) {
        std::cerr << "PipeWire's profiler module cannot be loaded; clock rates are estimated.\n";
    }
    hardware_ = std::make_unique<HardwareWatch>(loop_, SoundCards(places.processFileSystem),
                                                places.soundDevices, [this] { publish(); });
    socket_ = std::make_unique<SocketWatch>(loop_, [this] { serverAppeared(); });
    reconnect_ = std::make_unique<LoopTimer>(loop_, [this] { connect(); });
    quiet_ = std::make_unique<LoopTimer>(loop_, [this] { publishIfSettled(); });
    doubts_ = std::make_unique<LoopTimer>(loop_, [this] { askForDefault(); });
    silence_ = std::make_unique<LoopTimer>(loop_, [this] { askInSilence(); });
    probe_ = std::make_unique<DefaultsProbe>(context_.get(), loop_, [this](std::optional<std::string> name) {
        if (session_) session_->setDefaultSinkName(std::move(name));
    });
    sessionEnds_ = std::make_unique<LoopEvent>(loop_, [this] { endSession(); });
    checkUp_ = std::make_unique<LoopEvent>(loop_, [this] { checkUp(); });
    reconnect_->arm(0ms);
    if (pw_thread_loop_start(thread_.get()) != 0) {
        std::cerr << "The system gives no thread for the audio server; there will be no devices.\n";
    }
}

PipeWireHardware::Worker::~Worker() {
    if (thread_) pw_thread_loop_stop(thread_.get());
    // The loop's thread has ended, so this thread owns its objects now. The members end in the reverse of
    // their order.
}

void PipeWireHardware::Worker::connect() {
    if (session_) return;
    session_ =
        Session::connect(context_.get(), {.settled = [this] { settled(); },
                                          .clocksChanged = [this] { publishWhenQuiet(); },
                                          .programConnected = [this] { silence_->arm(silenceAfterProgram); },
                                          .silent = [this] { publish(); },
                                          .lost = [this] { sessionEnds_->signal(); }});
    if (session_) {
        ++connection_;
    } else {
        reconnectLater();
    }
}

void PipeWireHardware::Worker::reconnectLater() {
    const auto longest = socket_->isWatching() ? longestDelay : longestBlindDelay;
    delay_ = std::clamp(delay_ * 2, firstDelay, longest);
    reconnect_->arm(delay_);
}

void PipeWireHardware::Worker::serverAppeared() {
    if (session_) return;
    // The socket is there a moment before anybody listens to it.
    delay_ = 0ms;
    reconnect_->arm(5ms);
}

void PipeWireHardware::Worker::endSession() {
    if (!session_) return;
    session_.reset();
    probe_->forget();
    identities_.clear();
    clockInfluences_.clear();
    publish();
    reconnectLater();
}

void PipeWireHardware::Worker::settled() {
    delay_ = 0ms;
    socket_->stop();
    hardware_->follow(session_->graph());
    identities_.retain(session_->graph());
    sampleClocksIfChanged();
    doubtDefault();
    publishWhenQuiet();
}

/// The server tells one change in many steps, a few milliseconds apart; they are told on as one.
void PipeWireHardware::Worker::publishWhenQuiet() {
    if (!unpublishedSince_) unpublishedSince_ = monotonicNow();
    if (quiet_->isAble() && monotonicNow() - *unpublishedSince_ < longestBurst / 1ns) {
        quiet_->arm(quietTime);
    } else {
        publishIfSettled();
    }
}

void PipeWireHardware::Worker::publishIfSettled() {
    const bool isPatient = unpublishedSince_ &&
                           monotonicNow() - *unpublishedSince_ < longestTransition / 1ns && quiet_->isAble();
    if (isPatient && session_ &&
        isInTransition(session_->graph(), session_->knowsClocks(), clockChangedAt_ + clockSettles / 1ns)) {
        quiet_->arm(quietTime);
    } else {
        publish();
    }
}

void PipeWireHardware::Worker::sampleClocksIfChanged() {
    std::string influences = clockInfluences(session_->graph());
    if (influences == clockInfluences_) return;
    clockInfluences_ = std::move(influences);
    clockChangedAt_ = monotonicNow();
    glances_.begin();
    if (isAnyRunning(session_->graph())) session_->sampleClocks();
}

void PipeWireHardware::Worker::publish() {
    unpublishedSince_.reset();
    quiet_->disarm();
    const bool isResponding = session_ && session_->isResponding();
    const auto next = isResponding
                          ? std::make_shared<const Answers>(buildAnswers(
                                session_->graph(), hardware_->sight(), connection_, identities_, ids_))
                          : std::make_shared<const Answers>();
    const auto before = answers.get();
    answers.set(next);
    planCheckUp();
    listeners.notify(next->changesSince(*before));
    giveBackMemory();
}

/// The session manager moves streams a moment before or after it names another default.
void PipeWireHardware::Worker::doubtDefault() {
    DefaultDoubt doubt = defaultDoubt(session_->graph());
    if (doubt == doubt_) return;
    doubt_ = std::move(doubt);
    if (doubt_.isAny()) doubts_->arm(doubtLasts);
}

void PipeWireHardware::Worker::askForDefault() {
    if (session_ && defaultDoubt(session_->graph()) == doubt_) probe_->ask();
}

/// While nothing plays, no link shows a default that was missed.
void PipeWireHardware::Worker::askInSilence() {
    if (session_ && !isAnyRunning(session_->graph())) probe_->ask();
}

/// Hundreds of objects that have gone leave free memory behind.
void PipeWireHardware::Worker::giveBackMemory() {
    constexpr std::size_t many = 64;
    const std::size_t nodes = session_ ? session_->graph().nodes.size() : 0;
    mostNodes_ = std::max(mostNodes_, nodes);
    if (mostNodes_ < many || nodes > mostNodes_ / 2) return;
    mostNodes_ = nodes;
    ::malloc_trim(0);
}

void PipeWireHardware::Worker::planCheckUp() {
    const bool isResponding = session_ && session_->isResponding();
    const bool plays = isResponding && isAnyRunning(session_->graph());
    const bool isTaken = isResponding && hardware_->isAnyTaken();
    if (!plays && !isTaken) {
        nextCheckUp_ = never;
    } else if (nextCheckUp_ == never) {
        nextCheckUp_ = monotonicNow() + (isTaken ? hardwareCheckUp : serverCheckUp) / 1ns;
    }
}

void PipeWireHardware::Worker::noticeRead() {
    std::int64_t due = nextCheckUp_.load(std::memory_order_relaxed);
    if (due == never) return;
    if (monotonicNow() < due) return;
    // One of the readers asks; the others find that it has been done.
    if (nextCheckUp_.compare_exchange_strong(due, never)) checkUp_->signal();
}

void PipeWireHardware::Worker::checkUp() {
    if (!session_) return;
    session_->check();
    if (isAnyRunning(session_->graph()) && glances_.isDue()) session_->glanceAtClocks();
    if (hardware_->look() || identities_.isAnyInDoubt()) {
        publish();
    } else {
        planCheckUp();
    }
}

}  // namespace purlock::host_linux
