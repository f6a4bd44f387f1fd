#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/text.h"
#include "platform/linux/applications/desktop_entry.h"
#include "platform/linux/applications/desktop_locale.h"

/// The first line is the locale, the rest the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace purlock::host_linux;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::size_t lineEnd = text.find('\n');
    const auto suffixes = localeSuffixes(text.substr(0, lineEnd));
    const auto entry =
        parseDesktopEntry(lineEnd == std::string_view::npos ? text : text.substr(lineEnd), suffixes);
    if (entry.name && purlock::wellFormed(*entry.name) != *entry.name) std::abort();
    for (const std::string& executable : entry.executables) {
        if (executable.empty()) std::abort();
    }
    return 0;
}
