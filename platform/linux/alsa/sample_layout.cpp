#include "platform/linux/alsa/sample_layout.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>

namespace purlock::host_linux {

namespace {

/// How a name begins. Where no bits are told here, they follow.
struct Beginning {
    std::string_view text;
    SampleEncoding encoding;
    std::uint32_t bits = 0;
};

constexpr Beginning beginnings[] = {
    {"FLOAT64", SampleEncoding::floatingPoint, 64},
    {"FLOAT", SampleEncoding::floatingPoint, 32},
    {"IEC958_SUBFRAME", SampleEncoding::signedInteger, 24},
    {"DSD_U", SampleEncoding::dsd},
    {"F", SampleEncoding::floatingPoint},
    {"S", SampleEncoding::signedInteger},
    {"U", SampleEncoding::unsignedInteger},
};

constexpr std::uint32_t knownSizes[] = {8, 16, 18, 20, 24, 32, 64};

/// The number at the start of `text`, which is then taken off; 0 without one.
std::uint32_t takeNumber(std::string_view& text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc{}) text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// `text` is what follows the bits: "_LE", "LE", "_3LE" (bytes), "_32LE" (bits). Leaves the order.
std::uint32_t takeContainer(std::string_view& text, std::uint32_t bits) {
    if (!text.starts_with('_')) return (bits + 7) / 8 * 8;
    text.remove_prefix(1);
    const std::uint32_t told = takeNumber(text);
    return told == 0 ? std::bit_ceil(bits) : told == 3 ? 24 : told;
}

/// "P" is a plane for each channel, in the machine's own order. A byte has no order.
std::optional<std::endian> orderFromName(std::string_view name, std::uint32_t container) {
    if (container == 8 && (name.empty() || name == "P")) return std::endian::little;
    if (name == "LE") return std::endian::little;
    if (name == "BE") return std::endian::big;
    return name == "P" ? std::optional(std::endian::native) : std::nullopt;
}

}  // namespace

std::optional<SampleLayout> sampleLayoutFromName(std::string_view name) {
    const auto* const beginning = std::ranges::find_if(
        beginnings, [name](const Beginning& each) { return name.starts_with(each.text); });
    if (beginning == std::end(beginnings)) return std::nullopt;
    name.remove_prefix(beginning->text.size());
    const std::uint32_t bits = beginning->bits != 0 ? beginning->bits : takeNumber(name);
    if (std::ranges::find(knownSizes, bits) == std::end(knownSizes)) return std::nullopt;
    const std::uint32_t container = takeContainer(name, bits);
    const auto order = orderFromName(name, container);
    if (!order || container < bits || std::ranges::find(knownSizes, container) == std::end(knownSizes)) {
        return std::nullopt;
    }
    const bool isDsd = beginning->encoding == SampleEncoding::dsd;
    return SampleLayout{isDsd ? 1 : bits, container, beginning->encoding, *order};
}

}  // namespace purlock::host_linux
