#include "platform/linux/pipewire/bound_node.h"

#include <spa/param/param.h>
#include <spa/utils/result.h>

#include <chrono>
#include <utility>

#include "platform/linux/pipewire/dictionaries.h"

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

std::int64_t monotonicNow() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

bool hasFormats(NodeRole role) {
    return role == NodeRole::sink || role == NodeRole::duplex || role == NodeRole::outputStream;
}

std::optional<SoundFormat> firstFormat(const std::vector<std::vector<std::byte>>& values,
                                       std::uint32_t rate) {
    for (const auto& value : values) {
        PodView::Bytes bytes(value);
        const auto pod = PodView::take(bytes);
        if (!pod) continue;
        if (const auto format = soundFormatFromPod(*pod, rate)) return format;
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
      format_{.id = SPA_PARAM_Format},
      offered_{.id = SPA_PARAM_EnumFormat} {
    if (proxy_)
        pw_node_add_listener(reinterpret_cast<pw_node*>(proxy_.get()), listener_.hook(), &events, this);
}

NodeRecord* BoundObjects::Node::record() {
    auto& nodes = owner_.mirror().nodes;
    const auto found = nodes.find(serial_);
    return found == nodes.end() ? nullptr : &found->second;
}

void BoundObjects::Node::informed(const pw_node_info& info) {
    NodeRecord* const node = record();
    if (node == nullptr) return;
    isInformed_ = true;
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0 && info.props != nullptr) {
        node->properties = nodeProperties(info.props);
    }
    if ((info.change_mask & PW_NODE_CHANGE_MASK_STATE) != 0) {
        node->state = stateFromServer(info.state);
        clock_.changeState(node->state, monotonicNow());
        node->clockRate = clock_.rate();
    }
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PARAMS) != 0 && hasFormats(node->properties.role)) {
        for (std::uint32_t i = 0; i < info.n_params; ++i) {
            if (info.params[i].id == format_.id) list(format_, info.params[i].flags);
            if (info.params[i].id == offered_.id) list(offered_, info.params[i].flags);
        }
    }
    owner_.changed();
}

void BoundObjects::Node::list(Parameter& parameter, std::uint32_t flags) {
    if (parameter.flags == flags) return;
    parameter.flags = flags;
    parameter.arriving.clear();
    parameter.dueEcho = owner_.nextEcho();
    if ((flags & SPA_PARAM_INFO_READ) == 0) return;
    auto* const node = reinterpret_cast<pw_node*>(proxy_.get());
    const int request = pw_node_enum_params(node, ++parameter.sequence, parameter.id, 0, mostValues, nullptr);
    if (SPA_RESULT_IS_ASYNC(request)) parameter.sequence = request;
}

void BoundObjects::Node::told(int sequence, std::uint32_t id, const spa_pod* pod) {
    for (Parameter* const parameter : {&format_, &offered_}) {
        if (parameter->id != id || parameter->sequence != sequence || !parameter->dueEcho) continue;
        if (pod == nullptr || pod->size > largestValue || parameter->arriving.size() >= mostValues) continue;
        const auto* const bytes = reinterpret_cast<const std::byte*>(pod);
        parameter->arriving.emplace_back(bytes, bytes + sizeof(spa_pod) + pod->size);
    }
}

void BoundObjects::Node::commit(std::uint64_t echo) {
    const auto isWhole = [echo](const Parameter& parameter) {
        return parameter.dueEcho && *parameter.dueEcho <= echo;
    };
    for (Parameter* const parameter : {&format_, &offered_}) {
        if (!isWhole(*parameter)) continue;
        parameter->dueEcho.reset();
        parameter->values = std::exchange(parameter->arriving, {});
        if (parameter == &format_) chooseFormat();
        if (parameter == &offered_) choosePreferred();
    }
    if (!isInformed_ || format_.dueEcho || offered_.dueEcho) return;
    if (NodeRecord* const node = record()) node->isArriving = false;
}

void BoundObjects::Node::chooseFormat() {
    if (NodeRecord* const node = record()) node->format = firstFormat(format_.values, 0);
}

void BoundObjects::Node::choosePreferred() {
    NodeRecord* const node = record();
    if (node != nullptr)
        node->preferred = firstFormat(offered_.values, owner_.mirror().settings.defaultRate());
}

bool BoundObjects::Node::sawClock(const GraphClock& clock) {
    NodeRecord* const node = record();
    if (node == nullptr || !clock_.see(clock.rate, clock.time)) return false;
    node->clockRate = clock_.rate();
    return true;
}

}  // namespace purlock::host_linux
