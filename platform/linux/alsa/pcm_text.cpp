#include "platform/linux/alsa/pcm_text.h"

#include <array>
#include <cmath>

#include "platform/linux/alsa/field_lines.h"

namespace purlock::host_linux {

namespace {

struct NamedLayout {
    std::string_view name;
    SampleLayout layout;
};

constexpr bool isFloat = true;
constexpr bool isSigned = true;
constexpr bool bigEndian = true;
constexpr bool isDsd = true;

constexpr std::array namedLayouts = {
    NamedLayout{"S8", {8, 8, !isFloat, isSigned}},
    NamedLayout{"U8", {8, 8, !isFloat, !isSigned}},
    NamedLayout{"S16_LE", {16, 16, !isFloat, isSigned}},
    NamedLayout{"S16_BE", {16, 16, !isFloat, isSigned, bigEndian}},
    NamedLayout{"U16_LE", {16, 16, !isFloat, !isSigned}},
    NamedLayout{"U16_BE", {16, 16, !isFloat, !isSigned, bigEndian}},
    NamedLayout{"S24_LE", {24, 32, !isFloat, isSigned}},
    NamedLayout{"S24_BE", {24, 32, !isFloat, isSigned, bigEndian}},
    NamedLayout{"U24_LE", {24, 32, !isFloat, !isSigned}},
    NamedLayout{"U24_BE", {24, 32, !isFloat, !isSigned, bigEndian}},
    NamedLayout{"S32_LE", {32, 32, !isFloat, isSigned}},
    NamedLayout{"S32_BE", {32, 32, !isFloat, isSigned, bigEndian}},
    NamedLayout{"U32_LE", {32, 32, !isFloat, !isSigned}},
    NamedLayout{"U32_BE", {32, 32, !isFloat, !isSigned, bigEndian}},
    NamedLayout{"FLOAT_LE", {32, 32, isFloat, !isSigned}},
    NamedLayout{"FLOAT_BE", {32, 32, isFloat, !isSigned, bigEndian}},
    NamedLayout{"FLOAT64_LE", {64, 64, isFloat, !isSigned}},
    NamedLayout{"FLOAT64_BE", {64, 64, isFloat, !isSigned, bigEndian}},
    NamedLayout{"S24_3LE", {24, 24, !isFloat, isSigned}},
    NamedLayout{"S24_3BE", {24, 24, !isFloat, isSigned, bigEndian}},
    NamedLayout{"U24_3LE", {24, 24, !isFloat, !isSigned}},
    NamedLayout{"U24_3BE", {24, 24, !isFloat, !isSigned, bigEndian}},
    NamedLayout{"S20_LE", {20, 32, !isFloat, isSigned}},
    NamedLayout{"S20_BE", {20, 32, !isFloat, isSigned, bigEndian}},
    NamedLayout{"S20_3LE", {20, 24, !isFloat, isSigned}},
    NamedLayout{"S20_3BE", {20, 24, !isFloat, isSigned, bigEndian}},
    NamedLayout{"S18_3LE", {18, 24, !isFloat, isSigned}},
    NamedLayout{"S18_3BE", {18, 24, !isFloat, isSigned, bigEndian}},
    NamedLayout{"IEC958_SUBFRAME_LE", {24, 32, !isFloat, isSigned}},
    NamedLayout{"IEC958_SUBFRAME_BE", {24, 32, !isFloat, isSigned, bigEndian}},
    NamedLayout{"DSD_U8", {1, 8, !isFloat, !isSigned, !bigEndian, isDsd}},
    NamedLayout{"DSD_U16_LE", {1, 16, !isFloat, !isSigned, !bigEndian, isDsd}},
    NamedLayout{"DSD_U16_BE", {1, 16, !isFloat, !isSigned, bigEndian, isDsd}},
    NamedLayout{"DSD_U32_LE", {1, 32, !isFloat, !isSigned, !bigEndian, isDsd}},
    NamedLayout{"DSD_U32_BE", {1, 32, !isFloat, !isSigned, bigEndian, isDsd}},
};

struct NamedState {
    std::string_view name;
    PcmState state;
};

constexpr std::array namedStates = {
    NamedState{"OPEN", PcmState::open},
    NamedState{"SETUP", PcmState::setup},
    NamedState{"PREPARED", PcmState::prepared},
    NamedState{"RUNNING", PcmState::running},
    NamedState{"XRUN", PcmState::xrun},
    NamedState{"DRAINING", PcmState::draining},
    NamedState{"PAUSED", PcmState::paused},
    NamedState{"SUSPENDED", PcmState::suspended},
    NamedState{"DISCONNECTED", PcmState::disconnected},
};

PcmState stateFromName(std::string_view name) {
    for (const NamedState& row : namedStates) {
        if (row.name == name) return row.state;
    }
    return PcmState::closed;
}

/// "rate: 44100 (44100/1)": the fraction is the exact rate, the number before it is rounded.
std::optional<double> rateFromText(std::string_view text) {
    const auto rounded = leadingNumber<std::uint32_t>(text);
    if (!rounded || *rounded == 0) return std::nullopt;
    const auto open = text.find('(');
    const auto slash = text.find('/');
    if (open == std::string_view::npos || slash == std::string_view::npos || slash < open) return *rounded;
    const auto numerator = leadingNumber<std::uint32_t>(text.substr(open + 1));
    const auto denominator = leadingNumber<std::uint32_t>(text.substr(slash + 1));
    if (!numerator || !denominator || *denominator == 0) return *rounded;
    const double exact = static_cast<double>(*numerator) / static_cast<double>(*denominator);
    return std::abs(exact - *rounded) <= 1 ? exact : *rounded;
}

}  // namespace

std::optional<SampleLayout> sampleLayoutFromName(std::string_view name) {
    for (const NamedLayout& row : namedLayouts) {
        if (row.name == name) return row.layout;
    }
    return std::nullopt;
}

std::optional<HardwareParameters> parseHardwareParameters(std::string_view text) {
    std::optional<SampleLayout> layout;
    std::optional<double> rate;
    std::optional<std::uint32_t> channels;
    bool isMapped = false;
    while (!text.empty()) {
        const FieldLine field = splitLine(takeLine(text), ":");
        if (field.name == "access") isMapped = field.value.starts_with("MMAP_");
        if (field.name == "format") layout = sampleLayoutFromName(field.value);
        if (field.name == "rate") rate = rateFromText(field.value);
        if (field.name == "channels") channels = leadingNumber<std::uint32_t>(field.value);
    }
    constexpr std::uint32_t mostChannels = 1024;
    if (!layout || !rate || channels.value_or(0) == 0 || *channels > mostChannels) return std::nullopt;
    return HardwareParameters{*layout, *rate, *channels, isMapped};
}

PcmStatus parsePcmStatus(std::string_view text) {
    PcmStatus status;
    while (!text.empty()) {
        const FieldLine field = splitLine(takeLine(text), ":");
        if (field.name == "state") status.state = stateFromName(field.value);
        if (field.name == "owner_pid") status.ownerThread = leadingNumber<std::int32_t>(field.value);
    }
    if (status.ownerThread && *status.ownerThread <= 0) status.ownerThread.reset();
    if (status.state == PcmState::closed) status.ownerThread.reset();
    return status;
}

}  // namespace purlock::host_linux
