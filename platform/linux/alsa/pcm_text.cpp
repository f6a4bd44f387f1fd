#include "platform/linux/alsa/pcm_text.h"

#include <array>
#include <cmath>

#include "platform/linux/alsa/field_lines.h"

namespace purlock::host_linux {

namespace {

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
