#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "source/file_system.h"
#include "source/property_list_reader.h"

namespace purlock::test {

/// A home folder and the files that a test puts there. A file may be there without being a readable property
/// list.
class FakeFiles final : public FileSystem, public PropertyListReader {
  public:
    static constexpr const char* home = "/home/listener";

    void addPropertyList(const std::string& path, PropertyListDictionary dictionary) {
        existing_.insert(path);
        dictionaries_[path] = std::move(dictionary);
    }

    void addUnreadable(const std::string& path) { existing_.insert(path); }
    void forgetHome() { knowsHome_ = false; }

    bool fileExistsAtPath(const std::string& path) override { return existing_.contains(path); }

    std::optional<std::string> homeDirectory() override {
        return knowsHome_ ? std::optional<std::string>(home) : std::nullopt;
    }

    std::optional<PropertyListDictionary> dictionaryWithContentsOfFile(const std::string& path) override {
        readPaths_.push_back(path);
        const auto entry = dictionaries_.find(path);
        return entry == dictionaries_.end() ? std::nullopt : std::optional(entry->second);
    }

    /// The files that were opened, in order.
    const std::vector<std::string>& readPaths() const { return readPaths_; }

  private:
    std::set<std::string> existing_;
    std::map<std::string, PropertyListDictionary> dictionaries_;
    std::vector<std::string> readPaths_;
    bool knowsHome_ = true;
};

}  // namespace purlock::test
