#include "platform/linux/pipewire/rules/sound_path.h"

#include <algorithm>

namespace purlock::host_linux {

namespace {

/// True if the sound goes through the converter of the node at this place.
bool isConvertedAt(const SoundPath& path, std::size_t at) {
    const NodeRecord& node = *path[at];
    const bool isSink = !node.properties.isStream();
    return at + 1 == path.size() || !isSink || handsOnConverted(node, *path[at + 1]);
}

/// The rates that the sound has on its way, the stream's own first. Every node may convert between its own
/// rate and the clock's.
std::vector<double> ratesOnPath(const SoundPath& path, double clock) {
    std::vector<double> rates;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        const NodeRecord& node = *path[i];
        if (!isConvertedAt(path, i)) continue;
        if (node.format && node.format->sampleRate > 0) rates.push_back(node.format->sampleRate);
        rates.push_back(i == 0 ? clock : node.clockRate.value_or(clock));
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
    for (std::size_t i = 1; i + 1 < path.size(); ++i) {
        if (!path[i]->format || !isConvertedAt(path, i)) continue;
        if (keptBits(*path[i]->format) < keptBits(found)) found = *path[i]->format;
    }
    return found;
}

/// The depth that stands for the lost bits has to differ from the device's own.
SampleLayout layoutBeforeLoss(const SampleLayout& stream, const SoundFormat& narrow,
                              const SoundFormat& physical) {
    for (const SampleLayout& layout : {stream, narrow.layout}) {
        if (layout.bits != physical.layout.bits) return layout;
    }
    return mixerLayout();
}

}  // namespace

bool handsOnConverted(const NodeRecord& sink, const NodeRecord& next) {
    const std::string& group = sink.properties.linkGroup;
    return !group.empty() && group == next.properties.linkGroup;
}

PathLoss lossOnPath(const SoundPath& path, const SoundFormat& physical, double clock) {
    PathLoss loss;
    if (path.size() < 2) return loss;
    loss.rate = rateBeforeConversion(path, physical.sampleRate, clock);
    const SoundFormat narrow = narrowest(path, physical);
    if (keptBits(narrow) < keptByStream(*path.front())) {
        loss.layout = layoutBeforeLoss(layoutOf(*path.front()), narrow, physical);
    }
    return loss;
}

}  // namespace purlock::host_linux
