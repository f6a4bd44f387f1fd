#include "platform/linux/pipewire/mirror/session.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "base/identity.h"
#include "platform/linux/pipewire/rules/dictionaries.h"
#include "platform/linux/pipewire/rules/transition.h"

namespace purlock::host_linux {

namespace {

pw_properties* ownProperties() {
    return pw_properties_new(PW_KEY_APP_NAME, "Purlock", PW_KEY_APP_ID, applicationIdentifier,
                             PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Manager", nullptr);
}

}  // namespace

const pw_core_events Session::coreEvents = {
    .version = PW_VERSION_CORE_EVENTS, .done = event<&Session::done>, .error = event<&Session::error>};

const pw_registry_events Session::registryEvents = {.version = PW_VERSION_REGISTRY_EVENTS,
                                                    .global = event<&Session::global>,
                                                    .global_remove = event<&Session::globalRemove>};

std::unique_ptr<Session> Session::connect(pw_context* context, const Observers& observers) {
    Core core(pw_context_connect(context, ownProperties(), 0));
    if (!core) return nullptr;
    return std::make_unique<Session>(std::move(core), pw_context_get_main_loop(context), observers);
}

Session::Session(Core core, pw_loop* loop, const Observers& observers)
    : observers_(observers),
      core_(std::move(core)),
      registry_(pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0)),
      sync_(loop, core_.get(),
            {.done = [this](std::uint64_t sync) { return objects_.syncDone(sync); },
             .synced = [this] { synced(); },
             .silent = observers.silent,
             .lost = observers.lost}),
      objects_({graph_, registry_.get(), sync_}),
      clocks_(loop, registry_.get(), [this](const auto& clocks) { clockCycles(clocks); }) {
    pw_core_add_listener(core_.get(), coreListener_.hook(), &coreEvents, this);
    if (registry_) pw_registry_add_listener(registry_.get(), registryListener_.hook(), &registryEvents, this);
    sync_.changed();
}

bool Session::isInTransition() const {
    return host_linux::isInTransition(graph_, clocks_.hasProfiler(), clocks_.newRateFrom());
}

void Session::setDefaultSinkName(std::optional<std::string> name) {
    if (graph_.defaultSinkName == name) return;
    graph_.defaultSinkName = std::move(name);
    sync_.changed();
}

void Session::checkUp() {
    sync_.check();
    if (graph_.isAnyRunning()) clocks_.checkUp();
}

void Session::global(std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                     const spa_dict* properties) {
    const std::string_view kind = type != nullptr ? type : "";
    if (kind == PW_TYPE_INTERFACE_Profiler) return clocks_.setProfiler(id);
    if (kind == PW_TYPE_INTERFACE_Client &&
        dictionaryText(properties, "pipewire.sec.pid") != std::to_string(::getpid())) {
        observers_.clientConnected();
    }
    if (objects_.add(id, kind, properties)) sync_.changed();
}

void Session::globalRemove(std::uint32_t id) {
    clocks_.removeProfiler(id);
    if (objects_.remove(id)) sync_.changed();
}

void Session::done(std::uint32_t id, int sequence) {
    if (id == PW_ID_CORE) sync_.done(sequence);
}

/// An error of a single object comes of a request for an object that has gone meanwhile. An error of the
/// connection may be harmless as well, so the server is asked whether the connection still works.
void Session::error(std::uint32_t id, int, int result, const char*) {
    if (id != PW_ID_CORE) return;
    if (result == -EPIPE || result == -ECONNRESET || result == -EPROTO) return observers_.lost();
    sync_.check();
}

void Session::synced() {
    clocks_.follow(graph_);
    observers_.synced();
}

void Session::clockCycles(const std::vector<GraphClock>& clocks) {
    bool isNews = false;
    for (const GraphClock& clock : clocks) {
        for (const std::uint32_t id : clock.nodes) isNews = objects_.clockCycle(id, clock) || isNews;
    }
    if (isNews) observers_.clocksChanged();
}

}  // namespace purlock::host_linux
