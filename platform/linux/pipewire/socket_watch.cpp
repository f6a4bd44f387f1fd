#include "platform/linux/pipewire/socket_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace purlock::host_linux {

namespace {

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

}  // namespace

SocketPlace audioServerSocket() {
    std::string remote = environment("PIPEWIRE_REMOTE");
    if (remote.empty()) remote = PW_DEFAULT_REMOTE;
    if (const auto slash = remote.rfind('/'); slash != std::string::npos && slash > 0) {
        return {remote.substr(0, slash), remote.substr(slash + 1)};
    }
    for (const char* const name : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR", "USERPROFILE"}) {
        if (std::string folder = environment(name); !folder.empty()) return {folder, remote};
    }
    return {{}, remote};
}

SocketWatch::SocketWatch(pw_loop* loop, std::function<void()> appeared)
    : loop_(loop), appeared_(std::move(appeared)) {}

SocketWatch::~SocketWatch() {
    stop();
}

void SocketWatch::stop() {
    hasEnded_ = false;
    reader_.reset();
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

bool SocketWatch::isWatching() {
    if (hasEnded_) stop();
    if (descriptor_ >= 0) return true;
    const std::string folder = audioServerSocket().folder;
    if (folder.empty()) return false;
    descriptor_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (descriptor_ < 0) return false;
    // The folder's own end ends the watch; a socket is created by binding, or moved into its place.
    constexpr std::uint32_t events = IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR;
    if (::inotify_add_watch(descriptor_, folder.c_str(), events) < 0) {
        stop();
        return false;
    }
    reader_ = std::make_unique<LoopReader>(loop_, descriptor_, [this] { drain(); });
    return true;
}

void SocketWatch::drain() {
    alignas(inotify_event) char buffer[4096];
    const std::string name = audioServerSocket().name;
    bool isOurs = false;
    for (ssize_t size = 0; (size = ::read(descriptor_, buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, buffer + at, sizeof event);
            const char* const text = buffer + at + sizeof event;
            if (event.len > 0 && name == std::string_view(text, ::strnlen(text, event.len))) isOurs = true;
            if ((event.mask & IN_IGNORED) != 0) hasEnded_ = true;
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    if (hasEnded_ || isOurs) appeared_();
}

}  // namespace purlock::host_linux
