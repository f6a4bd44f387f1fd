#include "platform/linux/system/file_writing.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/linux/system/file_descriptor.h"
#include "platform/linux/system/files.h"

namespace purlock::host_linux {

namespace {

namespace fs = std::filesystem;

constexpr mode_t ownerOnly = 0600;

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Always a new file: neither the target of a symbolic link nor a file that somebody reads is written to.
bool writeNew(const std::string& name, std::string_view text) {
    const auto create = [&] {
        return FileDescriptor(::open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, ownerOnly));
    };
    FileDescriptor file = create();
    if (!file && errno == EEXIST) {
        ::unlink(name.c_str());  // left by a crash
        file = create();
    }
    return file && writeAll(file.get(), text);
}

bool moveOver(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str()) == 0;
}

/// Fails where the file system cannot exchange files, and for a folder, which gets its name back.
bool exchange(const std::string& from, const std::string& to) {
    const auto swapNames = [&] {
        return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_EXCHANGE) == 0;
    };
    if (!swapNames()) return false;
    if (::unlink(from.c_str()) == 0) return true;
    swapNames();
    return false;
}

/// Writes a temporary file and has `finish` give it the place of `file`.
template <typename Finish>
bool replaceBy(Finish finish, const std::string& file, std::string_view text) {
    const std::size_t name = file.rfind('/') + 1;  // 0 where there is no slash
    const std::string temporary = file.substr(0, name) + "." + file.substr(name) + ".new";
    if (writeNew(temporary, text) && finish(temporary, file)) return true;
    ::unlink(temporary.c_str());
    return false;
}

/// One write at the end of the file; a part that a full disk let through is cut off again.
bool appendWhole(int descriptor, std::string_view bytes) {
    ssize_t count = -1;
    do {
        count = ::write(descriptor, bytes.data(), bytes.size());
    } while (count < 0 && errno == EINTR);
    if (count == static_cast<ssize_t>(bytes.size())) return true;
    const off_t end = ::lseek(descriptor, 0, SEEK_CUR);
    if (count > 0 && end >= count) static_cast<void>(::ftruncate(descriptor, end - count) == 0);
    return false;
}

}  // namespace

bool replaceFile(const fs::path& file, std::string_view text) {
    return replaceBy(moveOver, file.native(), text);
}

bool replaceTransientFile(const fs::path& file, std::string_view text) {
    return replaceBy([](const std::string& from,
                        const std::string& to) { return exchange(from, to) || moveOver(from, to); },
                     file.native(), text);
}

bool appendToFile(const fs::path& file, std::string_view bytes) {
    const FileDescriptor descriptor(::open(file.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC));
    return descriptor && isRegularFile(descriptor.get()) && appendWhole(descriptor.get(), bytes);
}

bool createFile(const fs::path& file, std::string_view bytes) {
    const FileDescriptor descriptor(
        ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_APPEND | O_CLOEXEC, ownerOnly));
    return descriptor && appendWhole(descriptor.get(), bytes);
}

}  // namespace purlock::host_linux
