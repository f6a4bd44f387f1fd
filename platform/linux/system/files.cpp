#include "platform/linux/system/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

namespace {

// A pipe or a terminal may stand in a file's place: so the open neither waits for a writer nor takes the
// terminal over.
constexpr int readFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

std::optional<std::size_t> readSome(int descriptor, char* data, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(descriptor, data, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) return std::nullopt;
    }
}

}  // namespace

bool isRegularFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

FileText readWholeFile(const std::filesystem::path& file, std::size_t limit) {
    const FileDescriptor descriptor(open(file.c_str(), readFlags));
    if (!descriptor) {
        const bool missing = errno == ENOENT || errno == ENOTDIR;
        return {missing ? FileStatus::missing : FileStatus::unreadable, {}};
    }
    if (!isRegularFile(descriptor.get())) return {FileStatus::unreadable, {}};
    // The size is only a hint: files of /proc say 0, and any file may grow meanwhile.
    std::string text;
    std::size_t size = 0;
    for (;;) {
        text.resize(std::min(limit + 1, std::max<std::size_t>(4096, 2 * size)));
        const auto count = readSome(descriptor.get(), text.data() + size, text.size() - size);
        if (!count) return {FileStatus::unreadable, {}};
        if (*count == 0) break;
        size += *count;
        if (size > limit) return {FileStatus::tooLarge, {}};
    }
    text.resize(size);
    return {FileStatus::read, std::move(text)};
}

std::optional<std::string> readFile(const std::string& path, std::size_t limit) {
    const FileDescriptor file(open(path.c_str(), readFlags));
    if (!file || !isRegularFile(file.get())) return std::nullopt;
    // The kernel's files give their size as 0, or as a page, so the size is not asked for.
    std::array<char, 4096> chunk;
    std::string text;
    while (text.size() < limit) {
        const auto count = readSome(file.get(), chunk.data(), std::min(chunk.size(), limit - text.size()));
        if (!count) return std::nullopt;
        if (*count == 0) break;
        text.append(chunk.data(), *count);
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
