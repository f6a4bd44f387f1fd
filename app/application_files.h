#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace purlock {

/// The files that the program writes for others to read: the state log and the state snapshot.
///
/// Owned by the host; any thread, though never two for one file. Every failure is an answer, nothing more.
class ApplicationFiles {
  public:
    ApplicationFiles() = default;
    virtual ~ApplicationFiles() = default;
    ApplicationFiles(const ApplicationFiles&) = delete;
    ApplicationFiles& operator=(const ApplicationFiles&) = delete;

    /// The user's folder for applications' data; absent when there is none to be had.
    virtual std::optional<std::filesystem::path> applicationSupportDirectory() = 0;

    /// Makes the folder and those above it, where they are missing.
    virtual void createDirectory(const std::filesystem::path& folder) = 0;

    virtual bool fileExists(const std::filesystem::path& file) = 0;

    /// Adds `bytes` at the end of an existing file, all of them or none: a program that is killed and a disk
    /// that is full leave whole lines. Returns whether it was done.
    virtual bool appendToFile(const std::filesystem::path& file, std::string_view bytes) = 0;

    /// Writes a new file in an existing folder, all of it or none. Returns whether it was done.
    virtual bool createFile(const std::filesystem::path& file, std::string_view bytes) = 0;

    /// Replaces the file in one step: a reader sees the old bytes or the new, never half of either. There is
    /// no flush to disk. Returns whether it was done.
    virtual bool replaceFile(const std::filesystem::path& file, std::string_view bytes) = 0;
};

/// The folder that holds the log and the snapshot, made if it is missing. Stops the process when the host has
/// no folder for applications' data.
std::filesystem::path purlockFolder(ApplicationFiles& files);

}  // namespace purlock
