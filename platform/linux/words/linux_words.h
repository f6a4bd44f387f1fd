#pragma once

#include "core/system_words.h"

namespace purlock::host_linux {

/// The words in which texts speak of a Linux desktop with PipeWire. Commands and settings are those of
/// PipeWire 0.3.65 and newer (pw-metadata(1), pipewire.conf(5)). Pure; any thread.
SystemWords linuxWords();

}  // namespace purlock::host_linux
