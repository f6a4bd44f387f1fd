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
constexpr std::size_t enumFormat = 1;  // its place among the parameters
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

const pw_node_events BoundNode::events = {
    .version = PW_VERSION_NODE_EVENTS, .info = event<&BoundNode::info>, .param = event<&BoundNode::param>};

BoundNode::BoundNode(const BindContext& context, std::uint64_t serial)
    : context_(context),
      serial_(serial),
      record_(context.graph.nodes.at(serial)),
      proxy_(bind(context.registry, record_.id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE)),
      params_{Param{.id = SPA_PARAM_Format}, Param{.id = SPA_PARAM_EnumFormat}, Param{.id = SPA_PARAM_Props},
              Param{.id = SPA_PARAM_PortConfig}} {
    if (proxy_) {
        pw_node_add_listener(reinterpret_cast<pw_node*>(proxy_.get()), listener_.hook(), &events, this);
    }
}

/// A message may say nothing that the record did not. A volume that is dragged, for instance, sends one for
/// each step to every node of the device.
void BoundNode::info(const pw_node_info* info) {
    if (info == nullptr) return;
    bool isNews = !std::exchange(hasInfo_, true);
    if ((info->change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0 && info->props != nullptr) {
        NodeProperties properties = nodeProperties(info->props);
        isNews = isNews || properties != record_.properties;
        record_.properties = std::move(properties);
    }
    if ((info->change_mask & PW_NODE_CHANGE_MASK_STATE) != 0) {
        isNews = setState(stateFromServer(info->state)) || isNews;
    }
    if ((info->change_mask & PW_NODE_CHANGE_MASK_PARAMS) != 0 &&
        (record_.properties.isSink() || record_.properties.isStream())) {
        for (std::uint32_t i = 0; i < info->n_params; ++i) {
            for (Param& param : params_) {
                if (info->params[i].id == param.id) {
                    isNews = enumerate(param, info->params[i].flags) || isNews;
                }
            }
        }
    }
    if (isNews) context_.sync.changed();
}

bool BoundNode::setState(NodeState state) {
    if (record_.state == state) return false;
    record_.state = state;
    clock_.changeState(state, monotonicNow());
    record_.clockRate = clock_.rate();
    if (!record_.clockRate) record_.driver.reset();
    return true;
}

/// Asks for all values of a parameter if it has changed. True if it has.
bool BoundNode::enumerate(Param& param, std::uint32_t flags) {
    if (param.flags == flags) return false;
    param.flags = flags;
    param.arriving.clear();
    param.dueSync = context_.sync.next();
    if ((flags & SPA_PARAM_INFO_READ) == 0) return true;
    auto* const node = reinterpret_cast<pw_node*>(proxy_.get());
    const int request = pw_node_enum_params(node, ++param.sequence, param.id, 0, mostValues, nullptr);
    if (SPA_RESULT_IS_ASYNC(request)) param.sequence = request;
    return true;
}

void BoundNode::param(int sequence, std::uint32_t id, std::uint32_t, std::uint32_t, const spa_pod* pod) {
    for (Param& param : params_) {
        if (param.id != id || param.sequence != sequence || !param.dueSync) continue;
        if (pod == nullptr || pod->size > largestValue || param.arriving.size() >= mostValues) continue;
        const auto* const bytes = reinterpret_cast<const std::byte*>(pod);
        param.arriving.emplace_back(bytes, bytes + sizeof(spa_pod) + pod->size);
    }
}

void BoundNode::syncDone(std::uint64_t sync) {
    bool isComplete = hasInfo_;
    for (Param& param : params_) {
        if (param.dueSync && *param.dueSync <= sync) {
            param.dueSync.reset();
            param.values = std::exchange(param.arriving, {});
            use(param);
        }
        isComplete = isComplete && !param.dueSync;
    }
    if (isComplete) record_.isArriving = false;
}

void BoundNode::use(const Param& param) {
    switch (param.id) {
        case SPA_PARAM_Format:
            record_.format = firstFormat(param.values, 0);
            if (record_.format) record_.lastFormat = record_.format;
            break;
        case SPA_PARAM_EnumFormat:
            record_.offeredRates = offeredRatesFromPods(podsIn(param.values));
            choosePreferred();
            break;
        case SPA_PARAM_Props:
            record_.mixing = mixerPropertiesFromPods(podsIn(param.values));
            break;
        case SPA_PARAM_PortConfig:
            record_.portPositions = portPositionsFromPods(podsIn(param.values));
            break;
        default:
            break;
    }
}

void BoundNode::choosePreferred() {
    auto preferred = firstFormat(params_[enumFormat].values, context_.graph.settings.defaultRate());
    if (preferred == record_.preferred) return;
    record_.preferred = std::move(preferred);
    record_.lastFormat = record_.format;
}

bool BoundNode::clockCycle(const GraphClock& clock) {
    const bool isNewRate = clock_.cycle(clock.rate, clock.time);
    record_.clockTime = clock.time;
    record_.clockRate = clock_.rate();
    if (!record_.clockRate) return false;
    const bool isNewDriver = std::exchange(record_.driver, clock.nodes.front()) != clock.nodes.front();
    return isNewRate || isNewDriver;
}

}  // namespace purlock::host_linux
