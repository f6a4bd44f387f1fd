#include "base/text.h"
#include "platform/linux/pipewire/rules/metadata_text.h"
#include "tests/fuzz/fuzz_input.h"

using namespace purlock;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz::text(data, size);
    const auto name = host_linux::nameFromMetadata(text);
    fuzz::promise(!name || (!name->empty() && wellFormed(*name) == *name));
    static_cast<void>(host_linux::rateFromMetadata(text));
    const auto rates = host_linux::ratesFromMetadata(text);
    fuzz::promise(rates.size() <= 32);
    for (const std::uint32_t rate : rates) fuzz::promise(rate != 0);
    return 0;
}
