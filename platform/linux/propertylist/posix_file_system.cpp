#include "platform/linux/propertylist/posix_file_system.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace purlock::host_linux {

namespace {

std::optional<std::string> homeOfAccount() {
    std::array<char, 4096> buffer;
    passwd entry = {};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return {};
    return found->pw_dir;
}

}  // namespace

bool PosixFileSystem::fileExistsAtPath(const std::string& path) {
    struct stat status = {};
    return path.find('\0') == std::string::npos && stat(path.c_str(), &status) == 0;
}

std::optional<std::string> PosixFileSystem::homeDirectory() {
    const char* variable = std::getenv("HOME");
    auto home =
        variable != nullptr && *variable == '/' ? std::optional<std::string>(variable) : homeOfAccount();
    while (home && home->ends_with('/')) home->pop_back();
    return home;
}

}  // namespace purlock::host_linux
