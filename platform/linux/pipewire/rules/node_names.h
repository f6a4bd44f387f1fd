#pragma once

#include <string>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The name of a device or a filter for the user: its description, else its nick, else its name. Pure.
std::string nameOf(const NodeProperties& node);

/// The name that volume controls show for the application behind a stream; for other nodes, their own name.
/// Pure.
std::string applicationNameOf(const NodeProperties& stream, const AudioGraph& graph);

}  // namespace purlock::host_linux
