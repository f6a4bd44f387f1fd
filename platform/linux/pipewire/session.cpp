#include "platform/linux/pipewire/session.h"

#include <cerrno>
#include <string_view>
#include <utility>

namespace purlock::host_linux {

namespace {

/// A server that lives answers within a few milliseconds, also on a busy machine.
constexpr std::chrono::milliseconds longestSilence{3000};

/// By then a program that has connected has bound what it wants.
constexpr std::chrono::milliseconds defaultsDoubt{300};

pw_properties* clientProperties() {
    return pw_properties_new(PW_KEY_APP_NAME, "Purlock", PW_KEY_APP_ID, applicationIdentifier,
                             PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Manager", nullptr);
}

}  // namespace

const pw_core_events Session::coreEvents = {
    .version = PW_VERSION_CORE_EVENTS,
    .done =
        [](void* data, std::uint32_t id, int sequence) {
            if (id == PW_ID_CORE) static_cast<Session*>(data)->echoed(sequence);
        },
    .error = [](void* data, std::uint32_t id, int, int result,
                const char*) { static_cast<Session*>(data)->failed(id, result); },
};

const pw_registry_events Session::registryEvents = {
    .version = PW_VERSION_REGISTRY_EVENTS,
    .global =
        [](void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t version,
           const spa_dict* properties) {
            static_cast<Session*>(data)->global(id, type, version, properties);
        },
    .global_remove = [](void* data, std::uint32_t id) { static_cast<Session*>(data)->globalRemoved(id); },
};

std::unique_ptr<Session> Session::connect(pw_context* context, Observers observers) {
    Core core(pw_context_connect(context, clientProperties(), 0));
    if (!core) return nullptr;
    return std::make_unique<Session>(std::move(core), pw_context_get_main_loop(context),
                                     std::move(observers));
}

Session::Session(Core core, pw_loop* loop, Observers observers)
    : observers_(std::move(observers)),
      core_(std::move(core)),
      registry_(pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0)),
      objects_(*this),
      clocks_(loop, registry_.get(), [this](const auto& clocks) { sawClocks(clocks); }),
      silence_(loop,
               [this] {
                   isSilent_ = true;
                   observers_.silent();
               }),
      defaultsDoubt_(loop, [this] { askDefaultsAgain(); }) {
    pw_core_add_listener(core_.get(), coreListener_.hook(), &coreEvents, this);
    if (registry_) pw_registry_add_listener(registry_.get(), registryListener_.hook(), &registryEvents, this);
    changed();
}

Session::~Session() = default;

void Session::global(std::uint32_t id, const char* type, std::uint32_t version, const spa_dict* properties) {
    if (type == nullptr) return;
    if (std::string_view(type) == PW_TYPE_INTERFACE_Profiler) {
        clocks_.setProfiler(id);
        return;
    }
    if (std::string_view(type) == PW_TYPE_INTERFACE_Client) programConnected();
    if (objects_.add(id, type, version, properties)) changed();
}

/// While a program binds a store that another program keeps, as the session manager does the defaults, the
/// server passes the store's changes on to that program alone (`metadata_property` in its module-metadata).
/// Such a change would never be heard of here.
void Session::programConnected() {
    if (std::exchange(isInDoubt_, true)) {
        isDoubtRenewed_ = true;
    } else {
        defaultsDoubt_.arm(defaultsDoubt);
    }
}

void Session::askDefaultsAgain() {
    isInDoubt_ = false;
    objects_.askDefaultsAgain();
    changed();
    if (std::exchange(isDoubtRenewed_, false)) programConnected();
}

void Session::globalRemoved(std::uint32_t id) {
    clocks_.removeProfiler(id);
    if (objects_.remove(id)) changed();
}

void Session::changed() {
    hasChanged_ = true;
    isUnsettled_ = true;
    requestEcho();
}

void Session::requestEcho() {
    if (std::exchange(isEchoDue_, true)) return;
    ++echoesSent_;
    echoSequence_ = pw_core_sync(core_.get(), PW_ID_CORE, 0);
    silence_.arm(longestSilence);
    hasChanged_ = false;
}

void Session::echoed(int sequence) {
    if (!isEchoDue_ || sequence != echoSequence_) return;
    isEchoDue_ = false;
    silence_.disarm();
    hasAnswered_ = true;
    const bool wasSilent = std::exchange(isSilent_, false);
    objects_.commit(echoesSent_);
    // What came after the question may belong to what comes after the answer.
    const bool isMoreToCome = hasChanged_;
    if (isMoreToCome) requestEcho();
    if (std::exchange(isUnsettled_, isMoreToCome) || wasSilent) observers_.settled();
}

void Session::failed(std::uint32_t id, int result) {
    // Errors of single objects are those of requests for objects that went away meanwhile.
    if (id == PW_ID_CORE && (result == -EPIPE || result == -ECONNRESET || result == -EPROTO))
        observers_.lost();
}

void Session::sawClocks(const std::vector<GraphClock>& clocks) {
    bool isNew = false;
    for (const GraphClock& clock : clocks) {
        for (const std::uint32_t id : clock.nodes) isNew = objects_.sawClock(id, clock) || isNew;
    }
    if (isNew) observers_.clocksChanged();
}

}  // namespace purlock::host_linux
