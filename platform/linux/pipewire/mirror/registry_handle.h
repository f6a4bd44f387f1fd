#pragma once

#include <pipewire/pipewire.h>

#include <memory>

namespace purlock::host_linux {

struct RegistryDeleter {
    void operator()(pw_registry* registry) const { pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry)); }
};

/// This side's stand-in for a server's list of objects. The loop's thread.
using Registry = std::unique_ptr<pw_registry, RegistryDeleter>;

}  // namespace purlock::host_linux
