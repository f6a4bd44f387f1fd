#include "platform/linux/propertylist/posix_file_system.h"

#include <sys/stat.h>

#include "platform/linux/system/directories.h"

namespace purlock::host_linux {

bool PosixFileSystem::fileExistsAtPath(const std::string& path) {
    struct stat status = {};
    return path.find('\0') == std::string::npos && stat(path.c_str(), &status) == 0;
}

std::optional<std::string> PosixFileSystem::homeDirectory() {
    const auto directory = host_linux::homeDirectory();
    if (!directory) return std::nullopt;
    std::string home = directory->string();
    while (home.ends_with('/')) home.pop_back();
    return home;
}

}  // namespace purlock::host_linux
