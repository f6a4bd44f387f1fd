#include "platform/linux/system/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

namespace purlock::host_linux {

namespace {

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

bool isRegularFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
}

std::optional<std::string> readFile(const std::string& path, std::size_t limit) {
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file || !isRegularFile(file.get())) return std::nullopt;
    // The kernel's files give their size as 0, or as a page, so the size is not asked for.
    constexpr std::size_t chunk = 4096;
    std::string text;
    while (text.size() < limit) {
        const std::size_t before = text.size();
        text.resize(std::min(before + chunk, limit));
        const ssize_t count = read(file.get(), text.data() + before, text.size() - before);
        text.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count == 0) break;
        if (count < 0 && errno != EINTR) return std::nullopt;
    }
    return text;
}

std::optional<std::vector<std::string>> namesInFolder(const std::string& path, std::size_t limit) {
    const std::unique_ptr<DIR, FolderCloser> folder(opendir(path.c_str()));
    if (!folder) return std::nullopt;
    std::vector<std::string> names;
    while (names.size() < limit) {
        const dirent* entry = readdir(folder.get());
        if (entry == nullptr) break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
    }
    std::ranges::sort(names);
    return names;
}

}  // namespace purlock::host_linux
