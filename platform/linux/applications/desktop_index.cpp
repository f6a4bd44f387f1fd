#include "platform/linux/applications/desktop_index.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/text.h"
#include "platform/linux/applications/launchers.h"
#include "platform/linux/system/directories.h"
#include "platform/linux/system/files.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t maximumFiles = 16'384;
constexpr std::size_t maximumFileBytes = 256 * 1024;
constexpr std::size_t maximumFolders = 2000;
constexpr int maximumDepth = 4;  // of folders below "applications"
constexpr std::string_view entrySuffix = ".desktop";

std::string_view fileName(std::string_view path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::int64_t changeTime(const struct stat& status) {
    return std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

std::int64_t changeTime(const std::string& folder) {
    struct stat status {};
    return stat(folder.c_str(), &status) == 0 ? changeTime(status) : 0;
}

std::string resolved(const std::string& path) {
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    return error ? path : target.string();
}

}  // namespace

DesktopIndex DesktopIndex::read(const std::vector<std::string>& folders,
                                const std::vector<std::string>& localeSuffixes) {
    DesktopIndex index;
    for (const std::string& folder : folders) {
        index.readFolder(folder + "/applications", "", 0, localeSuffixes);
    }
    index.indexExecutables();
    return index;
}

void DesktopIndex::readFolder(const std::string& folder, const std::string& prefix, int depth,
                              const std::vector<std::string>& localeSuffixes) {
    if (folderTimes_.size() >= maximumFolders) return;
    struct stat status {};
    const bool isThere = stat(folder.c_str(), &status) == 0;
    if (isThere && !folders_.emplace(status.st_dev, status.st_ino).second) return;
    // The time before it is read, so that a change meanwhile is noticed.
    folderTimes_[folder] = isThere ? changeTime(status) : 0;
    const auto names = namesInFolder(folder, maximumFiles);
    if (!names || depth > maximumDepth) return;
    for (const std::string& name : *names) {
        const std::string path = joined({folder, "/", name});
        if (!name.ends_with(entrySuffix)) {
            std::error_code error;
            if (std::filesystem::is_directory(path, error)) {
                readFolder(path, joined({prefix, name, "-"}), depth + 1, localeSuffixes);
            }
            continue;
        }
        std::string id = joined({prefix, std::string_view(name).substr(0, name.size() - entrySuffix.size())});
        if (entries_.contains(id) || entries_.size() >= maximumFiles) continue;
        if (const auto text = readFile(path, maximumFileBytes)) {
            add(std::move(id), parseDesktopEntry(*text, localeSuffixes));
        }
    }
}

void DesktopIndex::add(std::string id, DesktopEntry entry) {
    entries_.emplace(std::move(id), std::move(entry));
}

void DesktopIndex::indexExecutables() {
    for (const auto& [id, entry] : entries_) {
        if (!entry.isApplication || entry.isHidden) continue;
        for (const std::string& executable : entry.executables) {
            const std::string_view name = fileName(executable);
            if (isLauncher(name)) continue;
            executables_.emplace(name, id);
            if (executable.starts_with('/')) executables_.emplace(resolved(executable), id);
        }
    }
}

const DesktopEntry* DesktopIndex::find(std::string_view id) const {
    const auto entry = entries_.find(id);
    return entry != entries_.end() && !entry->second.isHidden ? &entry->second : nullptr;
}

std::optional<std::string> DesktopIndex::idOfExecutable(std::string_view path) const {
    const std::string_view name = fileName(path);
    if (auto id = best(path, name)) return id;
    return best(name, name);
}

bool DesktopIndex::isHelper(std::string_view path) const {
    return !idOfExecutable(path) && (isNamed(path) || isNamed(fileName(path)));
}

bool DesktopIndex::isNamed(std::string_view key) const {
    return executables_.contains(key);
}

std::optional<std::string> DesktopIndex::best(std::string_view key, std::string_view name) const {
    const std::string* chosen = nullptr;
    const auto [first, last] = executables_.equal_range(key);
    for (auto candidate = first; candidate != last; ++candidate) {
        const DesktopEntry* entry = find(candidate->second);
        if (entry == nullptr || entry->isNotShown) continue;
        if (candidate->second == name) return candidate->second;
        if (chosen == nullptr) chosen = &candidate->second;
    }
    return chosen != nullptr ? std::optional(*chosen) : std::nullopt;
}

bool DesktopIndex::isOutdated() const {
    return std::ranges::any_of(folderTimes_,
                               [](const auto& folder) { return changeTime(folder.first) != folder.second; });
}

std::vector<std::string> desktopDataFolders(const Environment& environment) {
    std::vector<std::string> folders;
    const auto add = [&](std::string folder) {
        while (folder.size() > 1 && folder.ends_with('/')) folder.pop_back();
        // A path that is not absolute is to be ignored.
        if (folder.starts_with('/') && std::ranges::find(folders, folder) == folders.end()) {
            folders.push_back(std::move(folder));
        }
    };
    if (const auto data = dataDirectory(environment)) add(data->string());
    const std::string shared =
        filledVariable("XDG_DATA_DIRS", environment).value_or("/usr/local/share:/usr/share");
    for (std::size_t start = 0; start < shared.size();) {
        const std::size_t end = std::min(shared.find(':', start), shared.size());
        add(shared.substr(start, end - start));
        start = end + 1;
    }
    if (const auto home = homeDirectory(environment)) add(*home / ".local/share/flatpak/exports/share");
    add("/var/lib/flatpak/exports/share");
    add("/var/lib/snapd/desktop");
    return folders;
}

}  // namespace purlock::host_linux
