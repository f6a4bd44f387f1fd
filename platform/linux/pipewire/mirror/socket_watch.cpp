#include "platform/linux/pipewire/mirror/socket_watch.h"

#include <filesystem>
#include <utility>

#include "platform/linux/system/environment.h"

namespace purlock::host_linux {

SocketPlace audioServerSocket() {
    const std::string remote = filledVariable("PIPEWIRE_REMOTE").value_or(PW_DEFAULT_REMOTE);
    if (const auto slash = remote.rfind('/'); slash != std::string::npos && slash > 0) {
        return {remote.substr(0, slash), remote.substr(slash + 1)};
    }
    for (const char* const name : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR", "USERPROFILE"}) {
        if (const auto folder = filledVariable(name)) return {*folder, remote};
    }
    return {{}, remote};
}

SocketWatch::SocketWatch(pw_loop* loop, std::function<void()> appeared)
    : loop_(loop), appeared_(std::move(appeared)) {}

void SocketWatch::stop() {
    reader_.reset();
    watch_.end();
}

bool SocketWatch::isWatching() {
    const SocketPlace place = audioServerSocket();
    if (place.folder.empty() || !watch_.begin(std::filesystem::path(place.folder) / place.name)) {
        stop();
        return false;
    }
    if (reader_) return true;
    reader_ = std::make_unique<LoopReader>(loop_, watch_.descriptor(), [this] {
        if (watch_.takeEvents()) appeared_();
    });
    return true;
}

}  // namespace purlock::host_linux
