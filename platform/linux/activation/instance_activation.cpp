#include "platform/linux/activation/instance_activation.h"

#include <systemd/sd-bus.h>

#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/dbus/bus_service.h"

namespace purlock::host_linux {

namespace {

constexpr const char* serviceName = "org.purlock.Purlock";
constexpr const char* objectPath = "/org/purlock/Purlock";
constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr const char* panelInterface = "org.purlock.Panel";
constexpr std::size_t mostQuestions = 16;  // that wait for an answer
constexpr std::chrono::seconds timeLimit{5};

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
        for (const OwnedBusMessage& question : std::exchange(questions_, {})) {
            sd_bus_reply_method_return(question.get(), "b", static_cast<int>(isOpen));
        }
    }

  private:
    static const sd_bus_vtable* table();
    static const sd_bus_vtable* panelTable();

    /// Answered once the main thread has come to it.
    static int onQuestion(sd_bus_message* call, void* service, sd_bus_error* error) {
        auto& self = *static_cast<Service*>(service);
        if (self.questions_.size() >= mostQuestions) {
            return sd_bus_error_set_const(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "Too many questions.");
        }
        self.questions_.emplace_back(sd_bus_message_ref(call));
        self.onQuestion_();
        return 1;
    }

    void lost() {
        object_.reset();
        panelObject_.reset();
        questions_.clear();
    }

    /// Files and actions there are none; whoever names some wants to see the program all the same.
    static int onCall(sd_bus_message* call, void* service, sd_bus_error*) {
        static_cast<Service*>(service)->onCall_();
        return sd_bus_reply_method_return(call, "");
    }

    void connected() {
        sd_bus_slot* slot = nullptr;
        if (sd_bus_add_object_vtable(connection_.handle(), &slot, objectPath, applicationInterface, table(),
                                     this) >= 0) {
            object_ = BusSlot(slot);
        }
        if (sd_bus_add_object_vtable(connection_.handle(), &slot, objectPath, panelInterface, panelTable(),
                                     this) >= 0) {
            panelObject_ = BusSlot(slot);
        }
        auto call = connection_.newCall(
            {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"});
        call.append(serviceName).append(std::uint32_t{0});  // in line behind another owner, if there is one
        connection_.send(call);
    }

    const std::function<void()> onCall_;
    const std::function<void()> onQuestion_;
    BusConnection connection_;
    BusSlot object_;
    BusSlot panelObject_;
    std::vector<OwnedBusMessage> questions_;  // while the connection is there
};

// The macros of sd-bus are C.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wold-style-cast"
const sd_bus_vtable* InstanceActivation::Service::table() {
    static const std::array members{
        sd_bus_vtable SD_BUS_VTABLE_START(0),
        sd_bus_vtable SD_BUS_METHOD("Activate", "a{sv}", "", &Service::onCall, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("Open", "asa{sv}", "", &Service::onCall, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("ActivateAction", "sava{sv}", "", &Service::onCall,
                                    SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_VTABLE_END};
    return members.data();
}

const sd_bus_vtable* InstanceActivation::Service::panelTable() {
    static const std::array members{
        sd_bus_vtable SD_BUS_VTABLE_START(0),
        sd_bus_vtable SD_BUS_METHOD("IsOpen", "", "b", &Service::onQuestion, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_VTABLE_END};
    return members.data();
}
#pragma GCC diagnostic pop

InstanceActivation::InstanceActivation(RunLoop& mainLoop, BusThread& busThread, std::string busAddress,
                                       std::function<void()> onActivate, std::function<bool()> isPanelOpen)
    : link_(std::make_shared<Link>()) {
    link_->onActivate = std::move(onActivate);
    link_->isPanelOpen = std::move(isPanelOpen);
    link_->answer = [this](bool isOpen) {
        service_->post([isOpen](Service& service) { service.answer(isOpen); });
    };
    const auto onCall = [&mainLoop, weak = std::weak_ptr(link_)] {
        const auto link = weak.lock();
        if (!link || link->underWay.exchange(true)) return;
        mainLoop.post([weak] {
            const auto running = weak.lock();
            if (!running) return;
            running->underWay = false;
            running->onActivate();
        });
    };
    const auto onQuestion = [&mainLoop, weak = std::weak_ptr(link_)] {
        const auto link = weak.lock();
        if (!link || link->questionUnderWay.exchange(true)) return;
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
        if (call.valid()) sd_bus_message_append(call.message(), "a{sv}", 0);
        return call;
    }

    void ask() {
        auto call = newCall();
        question_ = connection_.call(call, timeLimit, [this](const BusIncoming& reply) {
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
