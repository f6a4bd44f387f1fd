#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/pipewire/mirror/bound_objects.h"

namespace purlock::host_linux {

/// One of the two stores that the mirror follows: the session manager's "default" and the server's
/// "settings".
class BoundObjects::Metadata {
  public:
    enum class Kind { defaults, settings };

    Metadata(BoundObjects& objects, std::uint32_t id, Kind kind);

    /// The store is gone. No setting of it holds any more. The last defaults stand until another session
    /// manager tells its own.
    void forget();

    /// The server has answered the sync of this number. The first answer that was asked for after the binding
    /// comes when the store has told everything: a key that it has not told by then is not there.
    void commit(std::uint64_t sync);

  private:
    int told(std::uint32_t subject, const char* key, const char* value);
    void setDefault(const char* key, const char* value);
    void setDefaultName(std::optional<std::string> name);
    void setSetting(const char* key, const char* value);

    static const pw_metadata_events events;

    BoundObjects& objects_;
    const Kind kind_;
    const std::uint64_t wholeFrom_;
    bool isWhole_ = false;
    bool hasToldDefault_ = false;
    Proxy proxy_;
    Listener listener_;
};

}  // namespace purlock::host_linux
