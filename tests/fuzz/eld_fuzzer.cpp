#include "platform/linux/alsa/eld_text.h"
#include "tests/fuzz/fuzz_input.h"

using namespace purlock;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto eld = host_linux::parseEld(fuzz::text(data, size));
    fuzz::promise(!eld.monitorName || (!eld.monitorName->empty() && eld.monitorName->size() <= 256));
    return 0;
}
