#pragma once

#include <spa/utils/dict.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace purlock::test {

/// A dictionary of the audio server's, with texts of its own.
class Dictionary {
  public:
    using Entry = std::pair<std::string, std::string>;

    Dictionary(std::initializer_list<Entry> entries) : Dictionary(std::vector<Entry>(entries)) {}
    explicit Dictionary(std::vector<Entry> entries) : entries_(std::move(entries)) {
        for (const Entry& entry : entries_) items_.push_back({entry.first.c_str(), entry.second.c_str()});
        dictionary_.n_items = static_cast<std::uint32_t>(items_.size());
        dictionary_.items = items_.data();
    }
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    const spa_dict* get() const { return &dictionary_; }

  private:
    std::vector<Entry> entries_;
    std::vector<spa_dict_item> items_;
    spa_dict dictionary_{};
};

}  // namespace purlock::test
