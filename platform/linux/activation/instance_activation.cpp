#include "platform/linux/activation/instance_activation.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "base/identity.h"
#include "platform/linux/dbus/bus_object.h"
#include "platform/linux/dbus/bus_service.h"

namespace purlock::host_linux {

namespace {

constexpr const char* serviceName = applicationIdentifier;
constexpr const char* objectPath = "/org/purlock/Purlock";
constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr const char* panelInterface = "org.purlock.Panel";
constexpr std::size_t mostQuestions = 16;  // that wait for an answer

}  // namespace

/// On the bus thread.
class InstanceActivation::Service {
  public:
    Service(BusThread& thread, std::string address, std::function<void()> onCall,
            std::function<void()> onQuestion)
        : onCall_(std::move(onCall)),
          onQuestion_(std::move(onQuestion)),
          connection_(thread, std::move(address), {[this] { connected(); }, [this] { lost(); }}) {}

    void answer(bool isOpen) {
        for (const BusRequest& question : std::exchange(questions_, {})) {
            question.answer([isOpen](BusWriter& writer) { writer.append(isOpen); });
        }
    }

  private:
    void connected() {
        application_.emplace(connection_, applicationObject());
        panel_.emplace(connection_, panelObject());
        auto call = connection_.newCall(messageBusMethod("RequestName"));
        call.append(serviceName).append(std::uint32_t{0});  // in line behind another owner, if there is one
        connection_.send(call);
    }

    void lost() {
        application_.reset();
        panel_.reset();
        questions_.clear();
    }

    /// There are no files and actions to open; a caller that names some wants to see the program all the
    /// same.
    BusInterface applicationObject() const {
        const auto activate = [this](const BusRequest& request) {
            onCall_();
            request.answer();
        };
        return {.path = objectPath,
                .name = applicationInterface,
                .properties = {},
                .methods = {{"Activate", "a{sv}", "", activate},
                            {"Open", "asa{sv}", "", activate},
                            {"ActivateAction", "sava{sv}", "", activate}},
                .signals = {}};
    }

    BusInterface panelObject() {
        return {.path = objectPath,
                .name = panelInterface,
                .properties = {},
                .methods = {{"IsOpen", "", "b", [this](BusRequest question) { ask(std::move(question)); }}},
                .signals = {}};
    }

    /// Answered once the main thread has come to it.
    void ask(BusRequest question) {
        if (questions_.size() >= mostQuestions) {
            return question.refuse("org.freedesktop.DBus.Error.LimitsExceeded", "Too many questions.");
        }
        questions_.push_back(std::move(question));
        onQuestion_();
    }

    const std::function<void()> onCall_;
    const std::function<void()> onQuestion_;
    BusConnection connection_;
    std::optional<BusObject> application_;  // while the connection is there, as what follows
    std::optional<BusObject> panel_;
    std::vector<BusRequest> questions_;
};

InstanceActivation::InstanceActivation(RunLoop& mainLoop, BusThread& busThread, std::string busAddress,
                                       std::function<void()> onActivate, std::function<bool()> isPanelOpen)
    : shared_(std::make_shared<Shared>()) {
    shared_->onActivate = std::move(onActivate);
    shared_->isPanelOpen = std::move(isPanelOpen);
    shared_->answer = [this](bool isOpen) {
        service_->post([isOpen](Service& service) { service.answer(isOpen); });
    };
    const auto onCall = [&mainLoop, weak = std::weak_ptr(shared_)] {
        const auto shared = weak.lock();
        if (!shared || shared->underWay.exchange(true)) return;
        mainLoop.post([weak] {
            const auto running = weak.lock();
            if (!running) return;
            running->underWay = false;
            running->onActivate();
        });
    };
    const auto onQuestion = [&mainLoop, weak = std::weak_ptr(shared_)] {
        const auto shared = weak.lock();
        if (!shared || shared->questionUnderWay.exchange(true)) return;
        mainLoop.post([weak] {
            const auto running = weak.lock();
            if (!running) return;
            running->questionUnderWay = false;
            running->answer(running->isPanelOpen());
        });
    };
    service_ = std::make_unique<OnBusThread<Service>>(
        busThread, [&busThread, address = std::move(busAddress), onCall, onQuestion] {
            return std::make_unique<Service>(busThread, address, onCall, onQuestion);
        });
}

InstanceActivation::~InstanceActivation() = default;

namespace {

enum class Request { activate, isPanelOpen };

/// The answer, if there is one.
struct Outcome {
    bool answered = false;
    std::optional<bool> isOpen;
};

/// One call of a second start. On a bus thread of its own.
class Caller {
  public:
    Caller(BusThread& thread, const std::string& address, Request request,
           std::function<void(const Outcome&)> onDone)
        : request_(request),
          onDone_(std::move(onDone)),
          connection_(thread, address, {[this] { connected(); }, [this] { onDone_({}); }}) {
        if (connection_.handle() == nullptr) onDone_({});
    }

  private:
    /// An instance that has just started gets its name a moment later.
    void connected() {
        instance_.emplace(connection_, serviceName, [this](const std::string& owner) {
            if (!owner.empty()) ask();
        });
    }

    BusCall newCall() {
        if (request_ == Request::isPanelOpen) {
            return instance_->newCall(objectPath, panelInterface, "IsOpen");
        }
        auto call = instance_->newCall(objectPath, applicationInterface, "Activate");
        call.emptyArray("{sv}");
        return call;
    }

    void ask() {
        auto call = newCall();
        question_ = connection_.call(call, busTimeLimit, [this](const BusIncoming& reply) {
            if (reply.isError()) return onDone_({});
            const auto value = request_ == Request::isPanelOpen ? reply.reader().next() : std::nullopt;
            onDone_({true, value ? value->boolean() : std::nullopt});
        });
        if (!question_) onDone_({});
    }

    const Request request_;
    const std::function<void(const Outcome&)> onDone_;
    BusConnection connection_;
    std::optional<BusService> instance_;
    BusSlot question_;  // not the instance's: its end is an answer too
};

Outcome outcomeOf(Request request, const std::string& busAddress, std::chrono::milliseconds longest) {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<Outcome> outcome;
    BusThread thread;
    const OnBusThread<Caller> caller(thread, [&] {
        return std::make_unique<Caller>(thread, busAddress, request, [&](const Outcome& done) {
            const std::lock_guard lock(mutex);
            if (!outcome) outcome = done;
            changed.notify_one();
        });
    });
    std::unique_lock lock(mutex);
    changed.wait_for(lock, longest, [&] { return outcome.has_value(); });
    return outcome.value_or(Outcome{});
}

}  // namespace

bool activateRunningInstance(const std::string& busAddress, std::chrono::milliseconds longest) {
    return outcomeOf(Request::activate, busAddress, longest).answered;
}

std::optional<bool> panelOfRunningInstance(const std::string& busAddress, std::chrono::milliseconds longest) {
    return outcomeOf(Request::isPanelOpen, busAddress, longest).isOpen;
}

}  // namespace purlock::host_linux
