#include "platform/linux/applications/process_applications.h"

#include <algorithm>
#include <map>

#include "platform/linux/applications/known_identifiers.h"
#include "platform/linux/applications/launchers.h"
#include "platform/linux/applications/process_identity.h"

namespace purlock::host_linux {

namespace {

constexpr int maximumParents = 8;

}  // namespace

std::optional<std::string> ProcessApplications::identifyByProgram(std::int32_t pid) const {
    const auto program = processes_.executable(pid);
    if (!program) return std::nullopt;
    if (!isLauncher(*program)) return index_->idOfExecutable(*program);
    const auto script = ownWords_.script(pid);
    return script ? index_->idOfExecutable(*script) : std::nullopt;
}

/// The control group first: it costs no look into the process's own file system.
std::optional<std::string> ProcessApplications::identify(std::int32_t pid) const {
    if (auto id = applicationOfControlGroup(processes_.controlGroups(pid))) {
        const DesktopEntry* entry = index_->find(*id);
        if (entry == nullptr || !entry->isTerminal) return id;
    }
    if (processes_.hasOwnMounts(pid)) {
        if (auto id = ownWords_.sandbox(pid)) return id;
    }
    return identifyByProgram(pid);
}

/// True if the process is a desktop's shell, a handler or the like.
bool ProcessApplications::isHelper(std::int32_t pid) const {
    const auto program = processes_.executable(pid);
    return program && index_->isHelper(*program);
}

std::optional<std::string> ProcessApplications::identifyByParents(std::int32_t pid) const {
    auto status = processes_.status(pid);
    const std::string controlGroups = processes_.controlGroups(pid);
    for (int level = 0; level < maximumParents && status; ++level) {
        const std::int32_t parent = status->parent;
        const auto parentStatus = processes_.status(parent);
        if (parent <= 1 || !parentStatus || parentStatus->session != status->session) break;
        if (processes_.controlGroups(parent) != controlGroups || isHelper(parent)) break;
        if (auto id = identifyByProgram(parent)) {
            const DesktopEntry* entry = index_->find(*id);
            if (entry == nullptr || entry->isTerminal) break;
            return id;
        }
        status = parentStatus;
    }
    return std::nullopt;
}

std::optional<std::string> ProcessApplications::nameOf(const std::string& id) const {
    const DesktopEntry* entry = index_->find(id);
    return entry != nullptr ? entry->name : std::nullopt;
}

std::optional<RunningApplication> ProcessApplications::applicationOf(std::int32_t pid) const {
    auto id = identify(pid);
    if (!id) id = identifyByParents(pid);
    if (!id) return std::nullopt;
    return RunningApplication{pid, bundleIdentifierOf(*id), nameOf(*id)};
}

std::vector<StartedApplication> ProcessApplications::instancesOf(std::string_view bundleID) const {
    std::map<std::int32_t, ProcessStatus> members;
    std::vector<StartedApplication> instances;
    for (const std::int32_t pid : processes_.processes()) {
        const auto id = identify(pid);
        if (!id || !isBundleIdentifierOf(bundleID, *id)) continue;
        const auto status = processes_.status(pid);
        if (!status) continue;
        members.emplace(pid, *status);
        instances.push_back({status->startTime, {pid, std::string(bundleID), nameOf(*id)}});
    }
    std::erase_if(instances, [&](const auto& instance) {
        return members.contains(members.at(instance.second.processIdentifier).parent);
    });
    std::ranges::stable_sort(instances, {}, [](const auto& instance) { return instance.first; });
    return instances;
}

}  // namespace purlock::host_linux
