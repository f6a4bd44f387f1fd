#pragma once

#include <string>
#include <string_view>

namespace purlock::host_linux {

/// The text, and where it holds characters that change the direction of what stands beside it (Unicode's
/// bidirectional formatting), the same closed in itself: an artist cannot turn the album behind it around.
/// Pure; any thread.
std::string isolatedText(std::string_view text);

}  // namespace purlock::host_linux
