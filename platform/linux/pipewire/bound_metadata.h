#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/pipewire/bound_objects.h"

namespace purlock::host_linux {

/// One of the two stores that the mirror follows: the session manager's "default" and the server's
/// "settings".
class BoundObjects::Metadata {
  public:
    enum class Kind { defaults, settings };

    Metadata(BoundObjects& objects, std::uint32_t id, Kind kind);

    /// It is gone. Of the settings, nothing is so any more; the defaults go with the session manager, and the
    /// last ones stand until another one tells its own.
    void forget();

    /// An echo of this number has come. By the first that vouches for it all that the store holds has been
    /// told; what it did not tell is not there.
    void commit(std::uint64_t echo);

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
