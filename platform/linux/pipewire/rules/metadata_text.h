#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace purlock::host_linux {

// The values of the server's metadata. They are texts of PipeWire's relaxed JSON: { "name": "x" },
// [ 44100, 48000 ] or [ 44100 48000 ], 48000. Any client may write them. Pure functions; any thread; no input
// makes them fail.

/// The member "name" of an object: the node.name of a default device. Absent when there is none or it is no
/// text.
std::optional<std::string> nameFromMetadata(std::string_view value);

/// A rate in Hz. Absent if the text is no number, or one that is too large.
std::optional<std::uint32_t> rateFromMetadata(std::string_view value);

/// The rates of a list, at most 32. Leaves out everything that is no number.
std::vector<std::uint32_t> ratesFromMetadata(std::string_view value);

}  // namespace purlock::host_linux
