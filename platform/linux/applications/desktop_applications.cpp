#include "platform/linux/applications/desktop_applications.h"

#include <algorithm>
#include <map>
#include <utility>

#include "platform/linux/applications/known_identifiers.h"
#include "platform/linux/applications/process_identity.h"

namespace purlock::host_linux {

namespace {

constexpr int maximumParents = 8;

/// Whether a program runs scripts, so that the script is what a desktop file would name: "python3.11" too.
bool isInterpreter(std::string_view program) {
    program = program.substr(program.find_last_of('/') + 1);
    const std::size_t version = program.find_first_of("0123456789.");
    const std::string_view name = program.substr(0, version);
    constexpr std::string_view interpreters[] = {"python", "perl", "ruby", "gjs-console", "gjs",
                                                 "node",   "bash", "sh",   "dash"};
    return std::ranges::find(interpreters, name) != std::end(interpreters);
}

/// The script that an interpreter was started with: its first argument that is no option.
std::optional<std::string> scriptOf(const std::vector<std::string>& arguments) {
    const auto isScript = [](const std::string& word) { return !word.empty() && word.front() != '-'; };
    if (arguments.size() < 2) return std::nullopt;
    const auto script = std::find_if(arguments.begin() + 1, arguments.end(), isScript);
    return script != arguments.end() ? std::optional(*script) : std::nullopt;
}

}  // namespace

DesktopApplications::DesktopApplications(std::shared_ptr<SerialQueue> queue, DesktopRoots roots)
    : queue_(std::move(queue)), roots_(std::move(roots)), processes_(roots_.processFolder) {
    desktop_->reading = true;
    readAgain();
}

void DesktopApplications::readAgain() {
    queue_->async([weak = std::weak_ptr(desktop_), folders = roots_.dataFolders, locale = roots_.locale] {
        if (weak.expired()) return;
        auto index =
            std::make_shared<const DesktopIndex>(DesktopIndex::read(folders, localeSuffixes(locale)));
        const auto desktop = weak.lock();
        if (!desktop) return;
        const std::lock_guard lock(desktop->mutex);
        desktop->index = std::move(index);
        desktop->reading = false;
    });
}

std::shared_ptr<const DesktopIndex> DesktopApplications::currentIndex() {
    std::shared_ptr<const DesktopIndex> index;
    {
        const std::lock_guard lock(desktop_->mutex);
        index = desktop_->index;
        if (desktop_->reading) return index;
        const auto now = std::chrono::steady_clock::now();
        if (now - desktop_->checked < roots_.keptIndexTime) return index;
        desktop_->checked = now;
    }
    if (!index->isOutdated()) return index;
    {
        const std::lock_guard lock(desktop_->mutex);
        if (std::exchange(desktop_->reading, true)) return index;
    }
    readAgain();
    return index;
}

std::optional<std::string> DesktopApplications::identifyByProgram(std::int32_t pid,
                                                                  const DesktopIndex& index) const {
    const auto program = processes_.executable(pid);
    if (!program) return std::nullopt;
    if (auto id = index.idOfExecutable(*program)) return id;
    if (!isInterpreter(*program)) return std::nullopt;
    const auto script = scriptOf(processes_.arguments(pid));
    return script ? index.idOfExecutable(*script) : std::nullopt;
}

std::optional<std::string> DesktopApplications::identify(std::int32_t pid, const DesktopIndex& index) const {
    if (const auto info = processes_.flatpakInfo(pid)) {
        if (auto id = applicationOfFlatpakInfo(*info)) return id;
    }
    if (auto id = applicationOfControlGroup(processes_.controlGroups(pid))) {
        const DesktopEntry* entry = index.find(*id);
        if (entry == nullptr || !entry->isTerminal) return id;
    }
    return identifyByProgram(pid, index);
}

std::optional<std::string> DesktopApplications::identifyByParents(std::int32_t pid,
                                                                  const DesktopIndex& index) const {
    auto status = processes_.status(pid);
    const std::string controlGroups = processes_.controlGroups(pid);
    for (int level = 0; level < maximumParents && status; ++level) {
        const std::int32_t parent = status->parent;
        const auto parentStatus = processes_.status(parent);
        if (parent <= 1 || !parentStatus || parentStatus->session != status->session) break;
        if (processes_.controlGroups(parent) != controlGroups) break;
        if (auto id = identifyByProgram(parent, index)) {
            const DesktopEntry* entry = index.find(*id);
            if (entry == nullptr || entry->isNotShown || entry->isTerminal) break;
            return id;
        }
        status = parentStatus;
    }
    return std::nullopt;
}

std::optional<RunningApplication> DesktopApplications::findApplication(std::int32_t pid,
                                                                       const DesktopIndex& index) const {
    auto id = identify(pid, index);
    if (!id) id = identifyByParents(pid, index);
    if (!id) return std::nullopt;
    const DesktopEntry* entry = index.find(*id);
    return RunningApplication{pid, bundleIdentifierOf(*id), entry != nullptr ? entry->name : std::nullopt};
}

std::vector<std::pair<std::uint64_t, RunningApplication>> DesktopApplications::findInstances(
    std::string_view bundleID, const DesktopIndex& index) const {
    std::map<std::int32_t, ProcessStatus> members;
    std::vector<std::pair<std::uint64_t, RunningApplication>> instances;
    for (const std::int32_t pid : processes_.processes()) {
        const auto id = identify(pid, index);
        if (!id || !isBundleIdentifierOf(bundleID, *id)) continue;
        const auto status = processes_.status(pid);
        if (!status) continue;
        members.emplace(pid, *status);
        const DesktopEntry* entry = index.find(*id);
        instances.push_back(
            {status->startTime, {pid, std::string(bundleID), entry != nullptr ? entry->name : std::nullopt}});
    }
    std::erase_if(instances, [&](const auto& instance) {
        return members.contains(members.at(instance.second.processIdentifier).parent);
    });
    std::ranges::stable_sort(instances, {}, [](const auto& instance) { return instance.first; });
    return instances;
}

bool DesktopApplications::stillRun(KeptInstances& kept, Moment now) const {
    if (now - kept.seen < roots_.trustedProcessTime) return true;
    kept.seen = now;
    return std::ranges::all_of(kept.instances, [this](const auto& instance) {
        const auto status = processes_.status(instance.second.processIdentifier);
        return status && status->startTime == instance.first;
    });
}

std::optional<RunningApplication> DesktopApplications::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    if (pid <= 0) return std::nullopt;
    const auto index = currentIndex();
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(kept_.mutex);
    forgetOld(index, now);
    const auto kept = kept_.processes.find(pid);
    const bool isKept = kept != kept_.processes.end();
    if (isKept && now - kept->second.seen < roots_.trustedProcessTime) return kept->second.application;
    const auto status = processes_.status(pid);
    if (!status) return std::nullopt;
    if (isKept && kept->second.startTime == status->startTime) {
        kept->second.seen = now;
        return kept->second.application;
    }
    auto application = findApplication(pid, *index);
    kept_.processes.insert_or_assign(pid, KeptProcess{application, status->startTime, now, now});
    return application;
}

std::vector<RunningApplication> DesktopApplications::runningApplicationsWithBundleIdentifier(
    std::string_view bundleID) {
    const auto index = currentIndex();
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(kept_.mutex);
    forgetOld(index, now);
    auto kept = kept_.applications.find(bundleID);
    if (kept == kept_.applications.end() || !stillRun(kept->second, now)) {
        KeptInstances found{findInstances(bundleID, *index), now, now};
        kept = kept_.applications.insert_or_assign(std::string(bundleID), std::move(found)).first;
    }
    std::vector<RunningApplication> running;
    for (const auto& [startTime, application] : kept->second.instances) running.push_back(application);
    return running;
}

/// With the answers' mutex held. Those that another index gave are all forgotten.
void DesktopApplications::forgetOld(const std::shared_ptr<const DesktopIndex>& index, Moment now) {
    if (kept_.index != index) {
        kept_.processes.clear();
        kept_.applications.clear();
        kept_.index = index;
    }
    std::erase_if(kept_.processes,
                  [&](const auto& each) { return now - each.second.asked >= keptProcessTime; });
    std::erase_if(kept_.applications,
                  [&](const auto& each) { return now - each.second.asked >= keptInstancesTime; });
}

}  // namespace purlock::host_linux
