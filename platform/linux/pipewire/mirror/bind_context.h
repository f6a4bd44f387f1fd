#pragma once

#include <pipewire/pipewire.h>

#include "platform/linux/pipewire/mirror/server_sync.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The parts of a session that its bound objects use. All of them outlive the objects.
struct BindContext {
    AudioGraph& graph;  // the mirror
    pw_registry* registry;
    ServerSync& sync;
};

}  // namespace purlock::host_linux
