#include "source/file_system.h"

namespace purlock {

std::string stringByExpandingTildeInPath(FileSystem& files, std::string_view path) {
    const bool hasTilde = path == "~" || path.starts_with("~/");
    const auto home = hasTilde ? files.homeDirectory() : std::nullopt;
    if (!home) return std::string(path);
    return *home + std::string(path.substr(1));
}

}  // namespace purlock
