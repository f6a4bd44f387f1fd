#include "platform/linux/pipewire/mirror/session.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "base/identity.h"
#include "platform/linux/pipewire/rules/dictionaries.h"

namespace purlock::host_linux {

namespace {

/// A server that lives answers within a few milliseconds, also on a busy machine.
constexpr std::chrono::milliseconds longestSilence{3000};

/// A server that was only stopped answers as soon as it goes on; a connection that is stuck never does.
constexpr std::chrono::milliseconds silenceForGood{15000};

pw_properties* clientProperties() {
    return pw_properties_new(PW_KEY_APP_NAME, "Purlock", PW_KEY_APP_ID, applicationIdentifier,
                             PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Manager", nullptr);
}

}  // namespace

const pw_core_events Session::coreEvents = {
    .version = PW_VERSION_CORE_EVENTS,
    .done =
        [](void* data, std::uint32_t id, int sequence) {
            if (id == PW_ID_CORE) static_cast<Session*>(data)->synced(sequence);
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
      silence_(loop, [this] { stayedSilent(); }) {
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
    if (std::string_view(type) == PW_TYPE_INTERFACE_Client &&
        dictionaryText(properties, "pipewire.sec.pid") != std::to_string(::getpid())) {
        observers_.programConnected();
    }
    if (objects_.add(id, type, version, properties)) changed();
}

void Session::stayedSilent() {
    if (std::exchange(isSilent_, true)) return observers_.lost();
    silence_.arm(silenceForGood);
    observers_.silent();
}

void Session::setDefaultSinkName(std::optional<std::string> name) {
    if (graph_.defaultSinkName == name) return;
    graph_.defaultSinkName = std::move(name);
    changed();
}

void Session::globalRemoved(std::uint32_t id) {
    clocks_.removeProfiler(id);
    if (objects_.remove(id)) changed();
}

void Session::changed() {
    hasChanged_ = true;
    isUnsettled_ = true;
    requestSync();
}

void Session::requestSync() {
    if (std::exchange(isSyncDue_, true)) return;
    ++syncsSent_;
    syncSequence_ = pw_core_sync(core_.get(), PW_ID_CORE, 0);
    silence_.arm(longestSilence);
    hasChanged_ = false;
}

void Session::synced(int sequence) {
    if (!isSyncDue_ || sequence != syncSequence_) return;
    isSyncDue_ = false;
    silence_.disarm();
    hasAnswered_ = true;
    const bool wasSilent = std::exchange(isSilent_, false);
    objects_.commit(syncsSent_);
    // A change that came after the question may belong to one that comes after the answer.
    const bool isMoreToCome = hasChanged_;
    if (isMoreToCome) requestSync();
    if (std::exchange(isUnsettled_, isMoreToCome) || wasSilent) observers_.settled();
}

/// An error of a single object comes of a request for an object that has gone meanwhile. An error of the
/// connection may be harmless as well, so the server is asked whether the connection still works.
void Session::failed(std::uint32_t id, int result) {
    if (id != PW_ID_CORE) return;
    if (result == -EPIPE || result == -ECONNRESET || result == -EPROTO) return observers_.lost();
    requestSync();
}

void Session::sawClocks(const std::vector<GraphClock>& clocks) {
    bool isNew = false;
    for (const GraphClock& clock : clocks) {
        for (const std::uint32_t id : clock.nodes) isNew = objects_.sawClock(id, clock) || isNew;
    }
    if (isNew) observers_.clocksChanged();
}

}  // namespace purlock::host_linux
