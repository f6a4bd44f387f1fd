#include "platform/linux/storage/disk_application_files.h"

#include <system_error>
#include <utility>

#include "platform/linux/system/file_writing.h"

namespace purlock::host_linux {

namespace fs = std::filesystem;

DiskApplicationFiles::DiskApplicationFiles(std::optional<fs::path> dataDirectory)
    : dataDirectory_(std::move(dataDirectory)) {}

std::optional<fs::path> DiskApplicationFiles::applicationSupportDirectory() {
    return dataDirectory_;
}

void DiskApplicationFiles::createDirectory(const fs::path& folder) {
    std::error_code ignored;
    fs::create_directories(folder, ignored);
}

bool DiskApplicationFiles::fileExists(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(file, ignored);
}

bool DiskApplicationFiles::appendToFile(const fs::path& file, std::string_view bytes) {
    return host_linux::appendToFile(file, bytes);
}

bool DiskApplicationFiles::createFile(const fs::path& file, std::string_view bytes) {
    return host_linux::createFile(file, bytes);
}

bool DiskApplicationFiles::replaceFile(const fs::path& file, std::string_view bytes) {
    return replaceTransientFile(file, bytes);
}

}  // namespace purlock::host_linux
