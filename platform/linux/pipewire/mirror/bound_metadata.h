#pragma once

#include <pipewire/extensions/metadata.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/linux/pipewire/mirror/bind_context.h"

namespace purlock::host_linux {

/// One of the two stores that the mirror follows: the session manager's "default" and the server's
/// "settings". The loop's thread.
class BoundMetadata {
  public:
    enum class Kind { defaults, settings };

    BoundMetadata(const BindContext& context, std::uint32_t id, Kind kind,
                  std::function<void()> settingsChanged);

    /// The store is gone. No setting of it holds any more. The last defaults stand until another session
    /// manager tells its own.
    void removed();

    /// The sync of this number is done. True if that has changed the mirror.
    bool syncDone(std::uint64_t sync);

  private:
    int property(std::uint32_t subject, const char* key, const char*, const char* value);
    bool setDefaultName(std::optional<std::string> name);
    void setSetting(const char* key, const char* value);

    static const pw_metadata_events events;

    const BindContext context_;
    const Kind kind_;
    const std::function<void()> settingsChanged_;
    std::optional<std::uint64_t> defaultDue_;  // a default that is not told by this sync is not there
    Proxy proxy_;
    Listener listener_;
};

}  // namespace purlock::host_linux
