#pragma once

#include <string>

#include "platform/linux/pipewire/records.h"

namespace purlock::host_linux {

/// What the user reads of a device or a filter: its description, else its nick, else its name. Pure.
std::string nameOf(const NodeProperties& node);

/// What a volume control calls the application behind a stream; of other nodes, their own name. Pure.
std::string applicationNameOf(const NodeProperties& stream, const AudioGraph& graph);

}  // namespace purlock::host_linux
