#pragma once

#include "app/application_files.h"

namespace purlock::host_macos {

/// The program's files below the user's Application Support folder. Any thread.
class FoundationFiles final : public ApplicationFiles {
  public:
    std::optional<std::filesystem::path> applicationSupportDirectory() override;
    void createDirectory(const std::filesystem::path& folder) override;
    bool fileExists(const std::filesystem::path& file) override;
    bool appendToFile(const std::filesystem::path& file, std::string_view bytes) override;
    bool createFile(const std::filesystem::path& file, std::string_view bytes) override;
    bool replaceFile(const std::filesystem::path& file, std::string_view bytes) override;
};

}  // namespace purlock::host_macos
