#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/system/path_watch.h"

namespace purlock::host_linux {

/// Tells when something named like the audio server's socket appears in the folder where it belongs, without
/// looking there meanwhile. Owned by the hardware layer; the loop's thread.
class SocketWatch {
  public:
    SocketWatch(pw_loop* loop, std::function<void()> appeared);

    /// True if appearances are being told. If they are not, or if a nearer folder exists by now, it tries
    /// again to watch. `appeared` must call neither this nor `stop`.
    bool isWatching();

    void stop();

  private:
    pw_loop* const loop_;
    const std::function<void()> appeared_;
    PathWatch watch_;
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
