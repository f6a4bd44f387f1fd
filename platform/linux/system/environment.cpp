#include "platform/linux/system/environment.h"

#include <cstdlib>
#include <utility>

namespace purlock::host_linux {

std::optional<std::string> processEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> filledVariable(const char* name, const Environment& environment) {
    auto value = environment(name);
    return value && !value->empty() ? std::move(value) : std::nullopt;
}

}  // namespace purlock::host_linux
