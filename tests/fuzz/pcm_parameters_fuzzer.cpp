#include "platform/linux/alsa/pcm_text.h"
#include "tests/fuzz/fuzz_input.h"

using namespace purlock;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto parameters = host_linux::parseHardwareParameters(fuzz::text(data, size));
    if (!parameters) return 0;
    fuzz::promise(parameters->sampleRate > 0 && parameters->sampleRate < 4294967297.0);
    fuzz::promise(parameters->channels > 0 && parameters->channels <= 1024);
    fuzz::promise(parameters->layout.bits > 0 && parameters->layout.bits <= parameters->layout.container);
    return 0;
}
