// The input is the bytes of one of the server's parameters.

#include <span>

#include "platform/linux/pipewire/rules/offered_rates.h"
#include "platform/linux/pipewire/rules/profile_pod.h"
#include "platform/linux/pipewire/rules/sound_format.h"
#include "tests/fuzz/fuzz_input.h"

using namespace purlock;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto bytes = std::as_bytes(std::span(data, size));
    const auto pod = host_linux::PodView::take(bytes);
    if (!pod) return 0;
    if (const auto format = host_linux::soundFormatFromPod(*pod, 48000)) {
        fuzz::promise(format->sampleRate >= 0 && format->channels > 0 && format->layout.bits > 0);
        const auto description = host_linux::streamDescription(*format);
        fuzz::promise(description.channelsPerFrame == format->channels);
    }
    fuzz::promise(host_linux::offeredRatesFromPods({*pod}).size() <= 256);
    for (const auto& clock : host_linux::graphClocksFromPod(*pod)) {
        fuzz::promise(clock.rate > 0 && !clock.nodes.empty());
    }
    return 0;
}
