#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/pipewire/handles.h"

namespace purlock::host_linux {

/// Tells when something named like the audio server's socket appears in the folder where it belongs, without
/// looking there meanwhile. Owned by the hardware layer; the loop's thread.
class SocketWatch {
  public:
    SocketWatch(pw_loop* loop, std::function<void()> appeared);
    ~SocketWatch();
    SocketWatch(const SocketWatch&) = delete;
    SocketWatch& operator=(const SocketWatch&) = delete;

    /// Whether appearances are being told; tries again to watch if not. False for a folder that is not there.
    /// Not to be called, like `stop`, from within `appeared`.
    bool isWatching();

    void stop();

  private:
    void drain();

    pw_loop* const loop_;
    const std::function<void()> appeared_;
    int descriptor_ = -1;
    bool hasEnded_ = false;  // the folder is gone
    std::unique_ptr<LoopReader> reader_;
};

/// The folder and the name of the socket, as the library finds them: PIPEWIRE_REMOTE, PIPEWIRE_RUNTIME_DIR,
/// XDG_RUNTIME_DIR, USERPROFILE. The folder is empty when none is set.
struct SocketPlace {
    std::string folder;
    std::string name;
};
SocketPlace audioServerSocket();

}  // namespace purlock::host_linux
