#pragma once

#include <cstdint>
#include <functional>

#include "platform/linux/pipewire/mirror/handles.h"

namespace purlock::host_linux {

/// A device or a client, bound for its dictionary alone. The loop's thread.
class BoundDictionary {
  public:
    enum class Kind { device, client };
    using Observer = std::function<void(const spa_dict*)>;

    BoundDictionary(pw_registry* registry, std::uint32_t id, Kind kind, Observer changed);

  private:
    template <typename Info, std::uint64_t mask>
    void info(const Info* info) {
        if (info != nullptr && (info->change_mask & mask) != 0) changed_(info->props);
    }

    static const pw_device_events deviceEvents;
    static const pw_client_events clientEvents;

    const Observer changed_;
    Proxy proxy_;
    Listener listener_;
};

}  // namespace purlock::host_linux
