#include "platform/linux/accessibility/application_registry.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/linux/accessibility/cache_items.h"
#include "platform/linux/accessibility/element_rules.h"
#include "platform/linux/applications/process_files.h"

namespace purlock::host_linux {

namespace {

constexpr const char* registryName = "org.a11y.atspi.Registry";
constexpr std::size_t maximumApplications = 512;
constexpr int maximumGenerations = 16;

bool descendsFrom(std::int32_t pid, std::int32_t ancestor) {
    const ProcessFiles processes;
    for (int generation = 0; generation < maximumGenerations && pid > 1; ++generation) {
        if (pid == ancestor) return true;
        const auto status = processes.status(pid);
        if (!status) return false;
        pid = status->parent;
    }
    return false;
}

}  // namespace

struct ApplicationRegistry::Search {
    std::int32_t pid = 0;
    Found onFound;
    std::vector<std::string> names;  // in the registry's order
    std::size_t open = 0;            // process ids still asked for
};

void ApplicationRegistry::find(std::int32_t pid, Found onFound) {
    auto search = std::make_shared<Search>(Search{pid, std::move(onFound), {}, 0});
    const auto call = connection_.newCall(
        {registryName, std::string(applicationElementPath), "org.a11y.atspi.Accessible", "GetChildren"});
    const bool sent = calls_.send(call, elementTimeLimit,
                                  [this, search](const BusIncoming& reply) { takeNames(search, reply); });
    if (!sent) search->onFound(std::nullopt);
}

/// Tried until it has worked: the first application starts the registry.
void ApplicationRegistry::listen() {
    if (std::exchange(listening_, true)) return;
    for (const char* event : {"window:restore", "window:create", "window:activate"}) {
        auto call =
            connection_.newCall({registryName, "/org/a11y/atspi/registry", registryName, "RegisterEvent"});
        call.append(event).emptyArray("s").append("");
        const bool sent = calls_.send(call, elementTimeLimit, [this](const BusIncoming& reply) {
            if (reply.isError()) listening_ = false;
        });
        if (!sent) listening_ = false;
    }
}

void ApplicationRegistry::takeNames(const std::shared_ptr<Search>& search, const BusIncoming& reply) {
    BusReader reader = reply.reader();
    if (!reply.isError()) listen();
    if (!reply.isError() && reader.enterArray()) {
        while (const auto reference = reader.next()) {
            const BusValue* name = reference->at(0);
            if (name == nullptr || name->text() == nullptr || search->names.size() >= maximumApplications) {
                continue;
            }
            search->names.push_back(*name->text());
        }
    }
    // Connections that are gone are forgotten, so that the map stays as small as the registry's list.
    std::erase_if(processes_, [&](const auto& known) {
        return std::ranges::find(search->names, known.first) == search->names.end();
    });
    ++search->open;  // this call itself, so that the search does not end before all are asked
    for (const std::string& name : search->names) {
        if (!processes_.contains(name)) askForProcess(search, name);
    }
    if (--search->open == 0) conclude(*search);
}

void ApplicationRegistry::askForProcess(const std::shared_ptr<Search>& search, const std::string& name) {
    auto call = connection_.newCall(messageBusMethod("GetConnectionUnixProcessID"));
    call.append(name);
    const bool sent = calls_.send(call, elementTimeLimit, [this, search, name](const BusIncoming& reply) {
        const auto value = reply.isError() ? std::nullopt : reply.reader().next();
        const auto pid = value ? value->integer() : std::nullopt;
        if (pid) processes_[name] = static_cast<std::int32_t>(*pid);
        if (--search->open == 0) conclude(*search);
    });
    if (sent) ++search->open;
}

void ApplicationRegistry::conclude(Search& search) const {
    std::optional<std::string> descendant;
    for (const std::string& name : search.names) {
        const auto process = processes_.find(name);
        if (process == processes_.end()) continue;
        if (process->second == search.pid) return search.onFound(name);
        if (!descendant && descendsFrom(process->second, search.pid)) descendant = name;
    }
    search.onFound(descendant);
}

}  // namespace purlock::host_linux
