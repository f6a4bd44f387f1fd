#include "platform/linux/pipewire/sound_path.h"

#include <algorithm>

namespace purlock::host_linux {

namespace {

/// The rates that the sound has on its way, the stream's own first. Every node may convert between its own
/// rate and the clock's.
std::vector<double> ratesOnPath(const SoundPath& path, double clock) {
    std::vector<double> rates;
    for (const NodeRecord* const node : path) {
        if (node == path.back()) break;
        if (node->format && node->format->sampleRate > 0) rates.push_back(node->format->sampleRate);
        rates.push_back(node == path.front() ? clock : node->clockRate.value_or(clock));
    }
    return rates;
}

std::optional<double> rateBeforeConversion(const SoundPath& path, double deviceRate, double clock) {
    const auto rates = ratesOnPath(path, clock);
    const auto converted =
        std::find_if(rates.rbegin(), rates.rend(), [&](double rate) { return rate != deviceRate; });
    return converted == rates.rend() ? std::nullopt : std::optional(*converted);
}

/// A stream without a format, as JACK's are, hands over what the mixer computes in.
SampleLayout layoutOf(const NodeRecord& stream) {
    return stream.format ? stream.format->layout : mixerLayout();
}

std::uint32_t keptByStream(const NodeRecord& stream) {
    SoundFormat format;
    format.layout = layoutOf(stream);
    return keptBits(format);
}

/// The format on the way that keeps the fewest bits.
SoundFormat narrowest(const SoundPath& path, const SoundFormat& physical) {
    SoundFormat found = physical;
    for (const NodeRecord* const node : path) {
        if (node == path.front() || node == path.back() || !node->format) continue;
        if (keptBits(*node->format) < keptBits(found)) found = *node->format;
    }
    return found;
}

/// What stands for the lost bits has to differ from the device's own depth.
SampleLayout layoutBeforeLoss(const SampleLayout& stream, const SoundFormat& narrow,
                              const SoundFormat& physical) {
    for (const SampleLayout& layout : {stream, narrow.layout}) {
        if (layout.bits != physical.layout.bits) return layout;
    }
    return mixerLayout();
}

}  // namespace

PathLoss lossOnPath(const SoundPath& path, const SoundFormat& physical, double clock) {
    PathLoss loss;
    if (path.size() < 2) return loss;
    loss.rate = rateBeforeConversion(path, physical.sampleRate, clock);
    const SoundFormat narrow = narrowest(path, physical);
    if (keptBits(narrow) < keptByStream(*path.front()))
        loss.layout = layoutBeforeLoss(layoutOf(*path.front()), narrow, physical);
    return loss;
}

}  // namespace purlock::host_linux
