#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/applications/known_identifiers.h"
#include "platform/linux/applications/process_identity.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace purlock::host_linux;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const auto& id : {applicationOfFlatpakInfo(text), applicationOfControlGroup(text)}) {
        if (!id) continue;
        if (id->empty() || id->size() > 255 || id->find('/') != std::string::npos) std::abort();
        if (!isBundleIdentifierOf(bundleIdentifierOf(*id), *id)) std::abort();
    }
    parseProcessStatus(text);
    return 0;
}
