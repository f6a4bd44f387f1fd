#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "app/application_files.h"

namespace purlock::host_linux {

/// The program's own files on the disk, below the user's data folder. Any thread.
///
/// Replacing goes through an exchange with a new file in the same folder and appending through one write in
/// append mode; neither waits for the disk.
class DiskApplicationFiles final : public ApplicationFiles {
  public:
    /// `dataDirectory` is the user's folder for application data, as directories.h finds it.
    explicit DiskApplicationFiles(std::optional<std::filesystem::path> dataDirectory);

    std::optional<std::filesystem::path> applicationSupportDirectory() override;
    void createDirectory(const std::filesystem::path& folder) override;
    bool fileExists(const std::filesystem::path& file) override;
    bool appendToFile(const std::filesystem::path& file, std::string_view bytes) override;
    bool createFile(const std::filesystem::path& file, std::string_view bytes) override;
    bool replaceFile(const std::filesystem::path& file, std::string_view bytes) override;

  private:
    const std::optional<std::filesystem::path> dataDirectory_;
};

}  // namespace purlock::host_linux
