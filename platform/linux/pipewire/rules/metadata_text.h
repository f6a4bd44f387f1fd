#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace purlock::host_linux {

// The values of the server's metadata: texts of PipeWire's relaxed JSON ("{ "name": "x" }", "[ 44100, 48000
// ]" or
// "[ 44100 48000 ]", "48000"). Any client may write them. Pure functions; any thread; no input makes them
// fail.

/// The member "name" of an object: the node.name of a default device. Absent when there is none or it is no
/// text.
std::optional<std::string> nameFromMetadata(std::string_view value);

/// A rate in Hz; absent for anything but a number that fits.
std::optional<std::uint32_t> rateFromMetadata(std::string_view value);

/// The rates of a list, at most 32; what is no number is left out.
std::vector<std::uint32_t> ratesFromMetadata(std::string_view value);

}  // namespace purlock::host_linux
