#include "platform/linux/applications/process_files.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "base/text.h"
#include "platform/linux/system/files.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t maximumProcesses = 65'536;
constexpr std::size_t maximumTextBytes = 16 * 1024;
constexpr std::size_t maximumArgumentBytes = 4096;

std::optional<std::int32_t> numberOf(const std::string& name) {
    std::int32_t number = 0;
    const char* const end = name.data() + name.size();
    const auto result = std::from_chars(name.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number > 0 ? std::optional(number) : std::nullopt;
}

std::optional<std::string> linkTarget(const std::string& path) {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t size = readlink(path.c_str(), buffer.data(), buffer.size());
    return size > 0 ? std::optional(std::string(buffer.data(), static_cast<std::size_t>(size)))
                    : std::nullopt;
}

bool isThisUsers(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && status.st_uid == geteuid();
}

}  // namespace

std::string ProcessFiles::pathOf(std::int32_t pid, const char* name) const {
    return joined({folder_, "/", std::to_string(pid), name});
}

std::optional<ProcessStatus> ProcessFiles::status(std::int32_t pid) const {
    const auto text = readFile(pathOf(pid, "/stat"), maximumTextBytes);
    return text ? parseProcessStatus(*text) : std::nullopt;
}

std::string ProcessFiles::controlGroups(std::int32_t pid) const {
    return readFile(pathOf(pid, "/cgroup"), maximumTextBytes).value_or("");
}

bool ProcessFiles::hasOwnMounts(std::int32_t pid) const {
    const auto mounts = linkTarget(pathOf(pid, "/ns/mnt"));
    return mounts && mounts != linkTarget(folder_ + "/self/ns/mnt");
}

std::optional<std::string> ProcessFiles::flatpakInfo(std::int32_t pid) const {
    return readFile(pathOf(pid, "/root/.flatpak-info"), maximumTextBytes);
}

std::optional<std::string> ProcessFiles::executable(std::int32_t pid) const {
    auto path = linkTarget(pathOf(pid, "/exe"));
    constexpr std::string_view mark = " (deleted)";  // the program was updated while it runs
    if (path && path->ends_with(mark)) path->resize(path->size() - mark.size());
    return path;
}

std::vector<std::string> ProcessFiles::arguments(std::int32_t pid) const {
    const std::string text = readFile(pathOf(pid, "/cmdline"), maximumArgumentBytes).value_or("");
    std::vector<std::string> words;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\0', start), text.size());
        words.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return words;
}

std::vector<std::int32_t> ProcessFiles::processes() const {
    std::vector<std::int32_t> pids;
    for (const std::string& name :
         namesInFolder(folder_, maximumProcesses).value_or(std::vector<std::string>())) {
        const auto pid = numberOf(name);
        if (pid && isThisUsers(pathOf(*pid, ""))) pids.push_back(*pid);
    }
    std::ranges::sort(pids);
    return pids;
}

}  // namespace purlock::host_linux
