#include "platform/linux/alsa/pcm_text.h"
#include "tests/fuzz/fuzz_input.h"

using namespace purlock;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto status = host_linux::parsePcmStatus(fuzz::text(data, size));
    fuzz::promise(!status.ownerThread || *status.ownerThread > 0);
    fuzz::promise(!status.ownerThread || status.state != host_linux::PcmState::closed);
    return 0;
}
