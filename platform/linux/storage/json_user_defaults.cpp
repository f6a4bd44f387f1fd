#include "platform/linux/storage/json_user_defaults.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "base/text.h"
#include "platform/linux/system/file_writing.h"
#include "platform/linux/system/files.h"

namespace purlock::host_linux {

namespace {

using Json = nlohmann::json;

/// The obstacle to a write to the settings file.
enum class Obstacle {
    none,
    malformed,   // not ours to read, but to be kept
    unreadable,  // it exists and nobody can say what it holds
};

Json parsed(const std::string& text) {
    constexpr bool allowExceptions = false;
    return Json::parse(text, nullptr, allowExceptions);
}

/// Where nobody can say, as in a folder that may not be searched, it counts as there.
bool mayExist(const std::filesystem::path& file) {
    std::error_code unknown;
    return std::filesystem::exists(file, unknown) || unknown;
}

}  // namespace

struct JsonUserDefaults::Contents {
    Json object = Json::object();
    Obstacle obstacle = Obstacle::none;
};

JsonUserDefaults::JsonUserDefaults(std::filesystem::path file)
    : file_(std::move(file)), contents_(std::make_unique<Contents>()) {
    const FileText read = readWholeFile(file_, largestFile);
    switch (read.status) {
        case FileStatus::missing:
            return;
        case FileStatus::unreadable:
            contents_->obstacle = Obstacle::unreadable;
            return;
        case FileStatus::tooLarge:
            contents_->obstacle = Obstacle::malformed;
            return;
        case FileStatus::read:
            break;
    }
    Json json = parsed(read.text);
    if (json.is_object()) {
        contents_->object = std::move(json);
    } else {
        contents_->obstacle = Obstacle::malformed;
    }
}

JsonUserDefaults::~JsonUserDefaults() = default;

std::optional<std::string> JsonUserDefaults::stringForKey(std::string_view key) const {
    const auto object = objectForKey(key);
    if (!object) return std::nullopt;
    const auto* text = std::get_if<std::string>(&*object);
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<DefaultsValue> JsonUserDefaults::objectForKey(std::string_view key) const {
    const auto found = contents_->object.find(std::string(key));
    if (found == contents_->object.end()) return std::nullopt;
    if (const auto* text = found->get_ptr<const std::string*>()) return *text;
    if (const auto* truth = found->get_ptr<const bool*>()) return *truth;
    return OtherDefaultsValue{};
}

void JsonUserDefaults::setObject(std::string_view text, std::string_view key) {
    contents_->object[std::string(key)] = wellFormed(text);
    write();
}

void JsonUserDefaults::setBool(bool value, std::string_view key) {
    contents_->object[std::string(key)] = value;
    write();
}

void JsonUserDefaults::removeObjectForKey(std::string_view key) {
    contents_->object.erase(std::string(key));
    write();
}

void JsonUserDefaults::write() {
    if (!makeRoom()) return;
    constexpr int indentation = 2;
    constexpr bool ensureAscii = false;
    const std::string text =
        contents_->object.dump(indentation, ' ', ensureAscii, Json::error_handler_t::replace) + "\n";
    std::error_code ignored;
    std::filesystem::create_directories(file_.parent_path(), ignored);
    replaceFile(file_, text);
}

/// True if the settings file may be replaced now; a malformed one is moved aside first.
bool JsonUserDefaults::makeRoom() {
    if (contents_->obstacle == Obstacle::unreadable) return false;
    if (contents_->obstacle == Obstacle::malformed) {
        std::filesystem::path backup = file_;
        backup += ".malformed";
        std::error_code failed;
        std::filesystem::rename(file_, backup, failed);
        if (failed && mayExist(file_)) return false;
        contents_->obstacle = Obstacle::none;
    }
    return true;
}

}  // namespace purlock::host_linux
