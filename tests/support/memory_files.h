#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "app/application_files.h"

namespace purlock::test {

/// Application files in memory; a test sees every operation, and decides which ones fail. One thread.
class MemoryFiles final : public ApplicationFiles {
  public:
    std::optional<std::filesystem::path> support = "/support";
    std::map<std::string, std::string> files;
    std::set<std::string> folders = {"/support"};
    bool writesFail = false;
    std::vector<std::string> operations;  // "append /support/Purlock/log.jsonl"

    std::optional<std::filesystem::path> applicationSupportDirectory() override { return support; }

    void createDirectory(const std::filesystem::path& folder) override {
        operations.push_back("folder " + folder.string());
        if (!writesFail) folders.insert(folder.string());
    }

    bool fileExists(const std::filesystem::path& file) override { return files.contains(file.string()); }

    bool appendToFile(const std::filesystem::path& file, std::string_view bytes) override {
        operations.push_back("append " + file.string());
        const auto found = files.find(file.string());
        if (writesFail || found == files.end()) return false;
        found->second += bytes;
        return true;
    }

    bool createFile(const std::filesystem::path& file, std::string_view bytes) override {
        operations.push_back("create " + file.string());
        return put(file, bytes);
    }

    bool replaceFile(const std::filesystem::path& file, std::string_view bytes) override {
        operations.push_back("replace " + file.string());
        return put(file, bytes);
    }

  private:
    bool put(const std::filesystem::path& file, std::string_view bytes) {
        if (writesFail || !folders.contains(file.parent_path().string())) return false;
        files.insert_or_assign(file.string(), std::string(bytes));
        return true;
    }
};

}  // namespace purlock::test
