#include "platform/linux/pipewire/rules/offered_rates.h"

#include <spa/param/format.h>
#include <spa/pod/pod.h>
#include <spa/utils/type.h>

#include <algorithm>
#include <limits>

namespace purlock::host_linux {

namespace {

constexpr std::size_t mostRanges = 256;
constexpr RateRange everyRate = {1, std::numeric_limits<std::uint32_t>::max()};

std::uint32_t positive(const PodView& value) {
    return static_cast<std::uint32_t>(std::max(value.integer().value_or(0), 0));
}

void addChoice(std::vector<RateRange>& ranges, const PodView::Choice& choice) {
    if (choice.kind == SPA_CHOICE_Range || choice.kind == SPA_CHOICE_Step) {
        if (choice.values.size() >= 3) {
            ranges.push_back({positive(choice.values[1]), positive(choice.values[2])});
        }
        return;
    }
    for (const PodView& value : choice.values) {
        if (ranges.size() < mostRanges) ranges.push_back({positive(value), positive(value)});
    }
}

}  // namespace

std::vector<RateRange> offeredRatesFromPods(const std::vector<PodView>& formats) {
    std::vector<RateRange> ranges;
    for (const PodView& format : formats) {
        bool isRaw = false;
        bool namesRate = false;
        std::vector<RateRange> own;
        for (const PodView::Property& property : format.properties(SPA_TYPE_OBJECT_Format)) {
            const auto choice = property.value.choice();
            if (property.key == SPA_FORMAT_mediaSubtype && !choice.values.empty()) {
                isRaw = choice.values.front().id() == SPA_MEDIA_SUBTYPE_raw;
            }
            if (property.key != SPA_FORMAT_AUDIO_rate) continue;
            namesRate = true;
            addChoice(own, choice);
        }
        if (!isRaw) continue;
        if (!namesRate) own.push_back(everyRate);
        for (const RateRange& range : own) {
            if (ranges.size() < mostRanges) ranges.push_back(range);
        }
    }
    return ranges;
}

bool canRunAt(const NodeRecord& node, double rate) {
    return node.offeredRates.empty() ||
           std::ranges::any_of(node.offeredRates, [rate](const RateRange& range) {
               return range.least <= rate && rate <= range.greatest;
           });
}

}  // namespace purlock::host_linux
