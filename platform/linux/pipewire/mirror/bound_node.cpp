#include "platform/linux/pipewire/mirror/bound_node.h"

#include <spa/param/param.h>
#include <spa/utils/result.h>

#include <utility>

#include "platform/linux/pipewire/mirror/monotonic_time.h"
#include "platform/linux/pipewire/rules/dictionaries.h"
#include "platform/linux/pipewire/rules/mixer_pod.h"
#include "platform/linux/pipewire/rules/offered_rates.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t mostValues = 64;
constexpr std::size_t largestValue = std::size_t{64} * 1024;

NodeState stateFromServer(pw_node_state state) {
    switch (state) {
        case PW_NODE_STATE_ERROR:
            return NodeState::error;
        case PW_NODE_STATE_CREATING:
            return NodeState::creating;
        case PW_NODE_STATE_SUSPENDED:
            return NodeState::suspended;
        case PW_NODE_STATE_IDLE:
            return NodeState::idle;
        case PW_NODE_STATE_RUNNING:
            return NodeState::running;
    }
    return NodeState::error;
}

bool hasFormats(NodeRole role) {
    return role == NodeRole::sink || role == NodeRole::duplex || role == NodeRole::outputStream;
}

std::vector<PodView> podsIn(const std::vector<std::vector<std::byte>>& values) {
    std::vector<PodView> pods;
    for (const auto& value : values) {
        PodView::Bytes bytes(value);
        if (const auto pod = PodView::take(bytes)) pods.push_back(*pod);
    }
    return pods;
}

std::optional<SoundFormat> firstFormat(const std::vector<std::vector<std::byte>>& values,
                                       std::uint32_t rate) {
    for (const PodView& pod : podsIn(values)) {
        if (auto format = soundFormatFromPod(pod, rate)) return format;
    }
    return std::nullopt;
}

}  // namespace

const pw_node_events BoundObjects::Node::events = {
    .version = PW_VERSION_NODE_EVENTS,
    .info =
        [](void* data, const pw_node_info* info) {
            if (info != nullptr) static_cast<Node*>(data)->informed(*info);
        },
    .param = [](void* data, int sequence, std::uint32_t id, std::uint32_t, std::uint32_t,
                const spa_pod* pod) { static_cast<Node*>(data)->told(sequence, id, pod); },
};

BoundObjects::Node::Node(Owner& owner, std::uint32_t id, std::uint64_t serial)
    : owner_(owner),
      serial_(serial),
      proxy_(static_cast<pw_proxy*>(
          pw_registry_bind(owner.registry(), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0))),
      parameters_{Parameter{.id = SPA_PARAM_Format}, Parameter{.id = SPA_PARAM_EnumFormat},
                  Parameter{.id = SPA_PARAM_Props}, Parameter{.id = SPA_PARAM_PortConfig}} {
    if (proxy_) {
        pw_node_add_listener(reinterpret_cast<pw_node*>(proxy_.get()), listener_.hook(), &events, this);
    }
}

NodeRecord* BoundObjects::Node::record() {
    auto& nodes = owner_.mirror().nodes;
    const auto found = nodes.find(serial_);
    return found == nodes.end() ? nullptr : &found->second;
}

/// Whether the server's message says anything that the record did not: dragging a volume, say, sends one for
/// each step to every node of the device.
void BoundObjects::Node::informed(const pw_node_info& info) {
    NodeRecord* const node = record();
    if (node == nullptr) return;
    bool isNews = !std::exchange(isInformed_, true);
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0 && info.props != nullptr) {
        NodeProperties properties = nodeProperties(info.props);
        isNews = isNews || properties != node->properties;
        node->properties = std::move(properties);
    }
    if ((info.change_mask & PW_NODE_CHANGE_MASK_STATE) != 0) {
        isNews = setState(*node, stateFromServer(info.state)) || isNews;
    }
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PARAMS) != 0 && hasFormats(node->properties.role)) {
        for (std::uint32_t i = 0; i < info.n_params; ++i) {
            for (Parameter& parameter : parameters_) {
                if (info.params[i].id == parameter.id) {
                    isNews = list(parameter, info.params[i].flags) || isNews;
                }
            }
        }
    }
    if (isNews) owner_.changed();
}

bool BoundObjects::Node::setState(NodeRecord& node, NodeState state) {
    if (node.state == state) return false;
    node.state = state;
    clock_.changeState(state, monotonicNow());
    node.clockRate = clock_.rate();
    if (!node.clockRate) node.driver.reset();
    return true;
}

/// Asks for all values of a parameter that has changed; whether it has.
bool BoundObjects::Node::list(Parameter& parameter, std::uint32_t flags) {
    if (parameter.flags == flags) return false;
    parameter.flags = flags;
    parameter.arriving.clear();
    parameter.dueSync = owner_.nextSync();
    if ((flags & SPA_PARAM_INFO_READ) == 0) return true;
    auto* const node = reinterpret_cast<pw_node*>(proxy_.get());
    const int request = pw_node_enum_params(node, ++parameter.sequence, parameter.id, 0, mostValues, nullptr);
    if (SPA_RESULT_IS_ASYNC(request)) parameter.sequence = request;
    return true;
}

void BoundObjects::Node::told(int sequence, std::uint32_t id, const spa_pod* pod) {
    for (Parameter& parameter : parameters_) {
        if (parameter.id != id || parameter.sequence != sequence || !parameter.dueSync) continue;
        if (pod == nullptr || pod->size > largestValue || parameter.arriving.size() >= mostValues) continue;
        const auto* const bytes = reinterpret_cast<const std::byte*>(pod);
        parameter.arriving.emplace_back(bytes, bytes + sizeof(spa_pod) + pod->size);
    }
}

void BoundObjects::Node::commit(std::uint64_t sync) {
    bool isComplete = isInformed_;
    for (Parameter& parameter : parameters_) {
        if (parameter.dueSync && *parameter.dueSync <= sync) {
            parameter.dueSync.reset();
            parameter.values = std::exchange(parameter.arriving, {});
            take(parameter);
        }
        isComplete = isComplete && !parameter.dueSync;
    }
    NodeRecord* const node = record();
    if (node != nullptr && isComplete) node->isArriving = false;
}

void BoundObjects::Node::take(const Parameter& parameter) {
    NodeRecord* const node = record();
    if (node == nullptr) return;
    switch (parameter.id) {
        case SPA_PARAM_Format:
            node->format = firstFormat(parameter.values, 0);
            if (node->format) node->lastFormat = node->format;
            break;
        case SPA_PARAM_EnumFormat:
            node->offeredRates = offeredRatesFromPods(podsIn(parameter.values));
            choosePreferred();
            break;
        case SPA_PARAM_Props:
            node->mixing = mixerPropertiesFromPods(podsIn(parameter.values));
            break;
        case SPA_PARAM_PortConfig:
            node->portPositions = portPositionsFromPods(podsIn(parameter.values));
            break;
        default:
            break;
    }
}

void BoundObjects::Node::choosePreferred() {
    NodeRecord* const node = record();
    if (node == nullptr) return;
    for (const Parameter& parameter : parameters_) {
        if (parameter.id != SPA_PARAM_EnumFormat) continue;
        auto preferred = firstFormat(parameter.values, owner_.mirror().settings.defaultRate());
        if (preferred == node->preferred) continue;
        node->preferred = std::move(preferred);
        node->lastFormat = node->format;
    }
}

bool BoundObjects::Node::sawClock(const GraphClock& clock) {
    NodeRecord* const node = record();
    if (node == nullptr) return false;
    const bool isNewRate = clock_.see(clock.rate, clock.time);
    node->clockTime = clock.time;
    node->clockRate = clock_.rate();
    if (!node->clockRate) return false;
    const bool isNewDriver = std::exchange(node->driver, clock.nodes.front()) != clock.nodes.front();
    return isNewRate || isNewDriver;
}

}  // namespace purlock::host_linux
