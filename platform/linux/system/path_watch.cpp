#include "platform/linux/system/path_watch.h"

#include <sys/inotify.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace purlock::host_linux {

namespace {

namespace fs = std::filesystem;

// A socket is created by binding, or moved into its place; the folder's own end ends the watch.
constexpr std::uint32_t appearance = IN_CREATE | IN_MOVED_TO | IN_ATTRIB;
constexpr std::uint32_t ending = IN_IGNORED | IN_MOVE_SELF;

}  // namespace

bool PathWatch::begin(const fs::path& path) {
    if (!path.is_absolute()) {
        end();
        return false;
    }
    if (!descriptor_) descriptor_ = FileDescriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!descriptor_) return false;
    fs::path step = path;
    for (fs::path folder = path.parent_path(); folder != step; folder = folder.parent_path()) {
        const int found =
            ::inotify_add_watch(descriptor_.get(), folder.c_str(), appearance | IN_MOVE_SELF | IN_ONLYDIR);
        if (found >= 0) {
            watch(found);
            step_ = step.filename();
            return true;
        }
        if (errno != ENOENT && errno != ENOTDIR) break;
        step = folder;
    }
    end();
    return false;
}

void PathWatch::end() {
    descriptor_ = FileDescriptor();
    folder_ = -1;
}

void PathWatch::watch(int folder) {
    if (folder_ >= 0 && folder_ != folder) ::inotify_rm_watch(descriptor_.get(), folder_);
    folder_ = folder;
}

bool PathWatch::takeEvents() {
    alignas(inotify_event) char buffer[4096];
    bool mayHaveAppeared = false;
    for (ssize_t size = 0; (size = ::read(descriptor_.get(), buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, buffer + at, sizeof event);
            const char* const text = buffer + at + sizeof event;
            at += static_cast<ssize_t>(sizeof event + event.len);
            if ((event.mask & IN_Q_OVERFLOW) != 0) mayHaveAppeared = true;
            if (event.wd != folder_) continue;
            const bool hasEnded = (event.mask & ending) != 0;
            const std::string_view name(text, event.len > 0 ? ::strnlen(text, event.len) : 0);
            if (hasEnded || name == step_.native()) mayHaveAppeared = true;
            if ((event.mask & IN_IGNORED) != 0) folder_ = -1;
        }
    }
    return mayHaveAppeared;
}

}  // namespace purlock::host_linux
