#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace purlock::host_linux {

/// The usual name of a codec that the server names in `api.bluez5.codec` (its own names: spa/plugins/bluez5):
/// "aptX HD" for "aptx_hd". One that is not known here is shown as it is; absent for an empty text. Pure.
std::optional<std::string> linkCodecName(std::string_view codec);

}  // namespace purlock::host_linux
