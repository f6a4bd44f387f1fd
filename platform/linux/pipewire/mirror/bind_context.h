#pragma once

#include <pipewire/pipewire.h>

#include "platform/linux/pipewire/mirror/server_sync.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// What the bound objects of a session work with. All of it outlives them.
struct BindContext {
    AudioGraph& graph;  // the mirror
    pw_registry* registry;
    ServerSync& sync;
};

}  // namespace purlock::host_linux
