#include "platform/linux/pipewire/rules/rate_reason.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/linux/pipewire/rules/node_names.h"
#include "platform/linux/pipewire/rules/offered_rates.h"

namespace purlock::host_linux {

namespace {

/// Nodes whose driver is not told may well share it.
bool mayShareClock(const NodeRecord& left, const NodeRecord& right) {
    return !left.driver || !right.driver || *left.driver == *right.driver;
}

/// The rate that a node asks the clock for; 0 when it does not say.
double askedRate(const NodeRecord& node) {
    if (node.format && node.format->sampleRate > 0) return node.format->sampleRate;
    return node.properties.requestedRate.value_or(0);
}

/// A forced rate of 0 stands for the rate that the node asks for (PW_KEY_NODE_FORCE_RATE).
double forcedRate(const NodeRecord& node) {
    const std::uint32_t rate = node.properties.forcedRate.value_or(0);
    return rate != 0 ? rate : node.properties.requestedRate.value_or(0);
}

class ReasonFinder {
  public:
    ReasonFinder(const PlayingPath& path, double streamRate, double clock, const AudioGraph& graph)
        : stream_(*path.nodes.front()),
          sink_(*path.nodes.back()),
          streamRate_(streamRate),
          clock_(clock),
          graph_(graph) {}

    std::optional<RateReason> find() const {
        if (!canRunAt(sink_, streamRate_)) {
            if (isSet()) return rate_reason::DeviceIsSet{};
            return rate_reason::DeviceCannot{};
        }
        if (clock_ == streamRate_) return std::nullopt;  // the device has not followed its clock
        const auto forced = graph_.settings.forcedRate;
        if (forced != 0 && forced != streamRate_) return rate_reason::Forced{};
        if (const auto* const node = forcingNode()) return rate_reason::ForcedByStream{nameOfStream(*node)};
        if (auto reason = notAllowed()) return reason;
        if (const auto* const node = holdingNode()) return rate_reason::HeldByStream{nameOfStream(*node)};
        return std::nullopt;
    }

  private:
    std::string nameOfStream(const NodeRecord& node) const {
        return applicationNameOf(node.properties, graph_);
    }

    /// The node at the other end of a link sets its rate itself.
    bool isSet() const {
        const NodeProperties& properties = sink_.properties;
        return properties.setRate && !properties.hasBluezKeys && !properties.hasRaopKeys;
    }

    bool isBeside(const NodeRecord& node) const {
        return &node != &sink_ && node.state == NodeState::running && mayShareClock(node, sink_);
    }

    const NodeRecord* forcingNode() const {
        for (const auto& [serial, node] : graph_.nodes) {
            if (!isBeside(node) || !node.properties.forcedRate) continue;
            if (forcedRate(node) == clock_) return &node;
        }
        return nullptr;
    }

    std::optional<RateReason> notAllowed() const {
        auto allowed = graph_.settings.allowedRates;
        if (allowed.empty()) allowed = {graph_.settings.clockRate};
        if (std::ranges::find(allowed, streamRate_) != allowed.end()) return std::nullopt;
        return rate_reason::NotAllowed{std::move(allowed)};
    }

    /// The first that runs at the clock's rate, among recorders and the streams that run beside this one.
    const NodeRecord* holdingNode() const {
        for (const auto& [serial, node] : graph_.nodes) {
            const NodeRole role = node.properties.role;
            if (role != NodeRole::outputStream && role != NodeRole::other) continue;
            if (&node != &stream_ && isBeside(node) && askedRate(node) == clock_) return &node;
        }
        return nullptr;
    }

    const NodeRecord& stream_;
    const NodeRecord& sink_;
    const double streamRate_;
    const double clock_;
    const AudioGraph& graph_;
};

}  // namespace

RateConversion rateConversionOnPath(const PlayingPath& path, const PathRates& rates,
                                    const AudioGraph& graph) {
    const auto& format = path.nodes.front()->format;
    RateConversion conversion;
    // A stream without a format, as JACK's are, runs at the clock's rate.
    conversion.streamRate = format && format->sampleRate > 0 ? format->sampleRate : rates.clock;
    conversion.mixerRate = rates.clock;
    if (conversion.streamRate == rates.clock && rates.clock == rates.device) {
        conversion.mixerRate = rates.near;  // something on the way runs at a rate of its own
        return conversion;
    }
    conversion.reason = ReasonFinder(path, conversion.streamRate, rates.clock, graph).find();
    return conversion;
}

}  // namespace purlock::host_linux
