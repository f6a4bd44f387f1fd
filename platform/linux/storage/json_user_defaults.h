#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/user_defaults.h"

namespace purlock::host_linux {

/// The user defaults as one JSON object in a file, keys to typed values.
///
/// Read once, when it is made; written whole on every change, through a temporary file in the same folder and
/// an atomic rename. Keys and types that this program does not use are kept. A missing, unreadable or
/// malformed file reads as no settings. Before the first change replaces a malformed file, or one too large
/// to be ours, it is kept beside as
/// "<name>.malformed"; if it cannot be kept, or exists and cannot be read, nothing is written over it. A
/// write that fails is dropped; the values hold for this run, and the next change writes them all again.
class JsonUserDefaults final : public UserDefaults {
  public:
    explicit JsonUserDefaults(std::filesystem::path file);
    ~JsonUserDefaults() override;

    std::optional<std::string> stringForKey(std::string_view key) const override;
    std::optional<DefaultsValue> objectForKey(std::string_view key) const override;
    void setObject(std::string_view text, std::string_view key) override;
    void setBool(bool value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;

    /// Our settings file is smaller than a kilobyte; a file larger than this is something else.
    static constexpr std::size_t largestFile = 1 << 20;

  private:
    struct Contents;

    void write();
    bool makeRoom();

    const std::filesystem::path file_;
    std::unique_ptr<Contents> contents_;
};

}  // namespace purlock::host_linux
