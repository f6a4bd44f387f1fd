#include "platform/linux/pipewire/mirror/handles.h"

#include <ctime>
#include <utility>

namespace purlock::host_linux {

Proxy bind(pw_registry* registry, std::uint32_t id, const char* type, std::uint32_t version) {
    return Proxy(static_cast<pw_proxy*>(pw_registry_bind(registry, id, type, version, 0)));
}

LoopTimer::LoopTimer(pw_loop* loop, Action action) : LoopSource(loop, std::move(action)) {
    const auto fire = [](void* data, std::uint64_t) {
        auto& timer = *static_cast<LoopTimer*>(data);
        timer.armed_ = false;
        timer.action_();
    };
    source_ = pw_loop_add_timer(loop_, fire, this);
}

void LoopTimer::arm(std::chrono::milliseconds delay) {
    armed_ = true;
    // A time of zero would disarm it.
    set(std::max<std::chrono::nanoseconds>(delay, std::chrono::nanoseconds(1)));
}

void LoopTimer::disarm() {
    if (!std::exchange(armed_, false)) return;
    set({});
}

void LoopTimer::set(std::chrono::nanoseconds delay) {
    timespec value{};
    value.tv_sec = static_cast<std::time_t>(delay.count() / 1'000'000'000);
    value.tv_nsec = static_cast<long>(delay.count() % 1'000'000'000);
    timespec once{};
    if (source_ != nullptr) pw_loop_update_timer(loop_, source_, &value, &once, false);
}

LoopEvent::LoopEvent(pw_loop* loop, Action action) : LoopSource(loop, std::move(action)) {
    source_ = pw_loop_add_event(
        loop_, [](void* data, std::uint64_t) { static_cast<LoopEvent*>(data)->action_(); }, this);
}

LoopReader::LoopReader(pw_loop* loop, int descriptor, Action action) : LoopSource(loop, std::move(action)) {
    const auto run = [](void* data, int, std::uint32_t) { static_cast<LoopReader*>(data)->action_(); };
    source_ = pw_loop_add_io(loop_, descriptor, SPA_IO_IN, false, run, this);
}

}  // namespace purlock::host_linux
