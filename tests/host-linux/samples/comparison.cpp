#include "tests/host-linux/samples/comparison.h"

#include <algorithm>
#include <cstdlib>

namespace purlock::test {

namespace {

constexpr std::size_t stretch = 48;    // frames that are compared in one piece
constexpr std::size_t distance = 400;  // frames from the start of one stretch to that of the next
constexpr double mostForgiven = 0.12;  // of the stretches
constexpr std::size_t fewestStretches = 12;

class Search {
  public:
    Search(const Sound& played, const Sound& captured, const std::vector<std::vector<int>>& places,
           std::int64_t tolerance)
        : played_(played), captured_(captured), places_(places), tolerance_(tolerance) {}

    /// Where a frame of the played sound may be found in the captured one, the likeliest place first.
    bool findStretch(std::size_t at) {
        if (isAt(at, static_cast<std::int64_t>(at) + offset_)) return true;
        const auto last = static_cast<std::int64_t>(captured_.frames()) - static_cast<std::int64_t>(stretch);
        for (std::int64_t place = 0; place <= last; ++place) {
            if (!isAt(at, place)) continue;
            offset_ = place - static_cast<std::int64_t>(at);
            return true;
        }
        return false;
    }

  private:
    bool isAt(std::size_t at, std::int64_t place) const {
        if (place < 0 || static_cast<std::size_t>(place) + stretch > captured_.frames()) return false;
        for (std::size_t i = 0; i < stretch; ++i) {
            if (!isFrameEqual(at + i, static_cast<std::size_t>(place) + i)) return false;
        }
        return true;
    }

    bool isFrameEqual(std::size_t at, std::size_t place) const {
        for (int channel = 0; channel < played_.channels; ++channel) {
            const std::int64_t wanted = played_.at(at, channel);
            for (const int own : places_[static_cast<std::size_t>(channel)]) {
                if (std::abs(wanted - captured_.at(place, own)) > tolerance_) return false;
            }
        }
        return true;
    }

    const Sound& played_;
    const Sound& captured_;
    const std::vector<std::vector<int>>& places_;
    const std::int64_t tolerance_;
    std::int64_t offset_ = 0;  // of the last stretch that was found
};

bool isSilent(const Sound& sound) {
    return std::all_of(sound.samples.begin(), sound.samples.end(),
                       [](std::int32_t each) { return each == 0; });
}

}  // namespace

const char* name(Outcome outcome) {
    constexpr const char* names[] = {"equal", "changed", "silent", "unclear"};
    return names[static_cast<int>(outcome)];
}

/// Searched is the other way round: what was captured is a part of what was played.
Outcome compare(const Sound& played, const Sound& captured, const std::vector<std::vector<int>>& places,
                std::int64_t tolerance) {
    if (isSilent(captured)) return Outcome::silent;
    const bool hasPlaces =
        std::none_of(places.begin(), places.end(), [](const auto& own) { return own.empty(); });
    if (!hasPlaces) return Outcome::changed;
    // Each stretch of the captured sound is looked for in the played one, channel by channel.
    Sound arranged{played.channels, {}};
    std::vector<std::vector<int>> straight;
    for (int channel = 0; channel < played.channels; ++channel) straight.push_back({channel});
    for (std::size_t frame = 0; frame < captured.frames(); ++frame) {
        for (const auto& own : places) arranged.samples.push_back(captured.at(frame, own.front()));
    }
    for (std::size_t frame = 0; frame < captured.frames(); ++frame) {
        for (const auto& own : places) {
            for (const int other : own) {
                const std::int64_t difference =
                    std::int64_t{captured.at(frame, other)} - captured.at(frame, own.front());
                if (std::abs(difference) > tolerance) return Outcome::changed;
            }
        }
    }
    Search search(arranged, played, straight, tolerance);
    std::size_t found = 0;
    std::size_t total = 0;
    for (std::size_t at = 0; at + stretch <= arranged.frames(); at += distance) {
        ++total;
        if (search.findStretch(at)) ++found;
    }
    if (total < fewestStretches) return Outcome::unclear;
    const double share = static_cast<double>(found) / static_cast<double>(total);
    if (share >= 1 - mostForgiven) return Outcome::equal;
    return share <= mostForgiven ? Outcome::changed : Outcome::unclear;
}

}  // namespace purlock::test
