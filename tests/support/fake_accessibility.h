#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "source/accessibility_tree.h"

namespace purlock::test {

/// An element with the attributes that a test gives it. Notes which attributes were read, in order.
class FakeElement final : public AccessibilityElement {
  public:
    using Attributes = std::map<std::string, AttributeValue, std::less<>>;

    explicit FakeElement(Attributes attributes = {}) : attributes_(std::move(attributes)) {}

    void set(const std::string& attribute, AttributeValue value) {
        attributes_[attribute] = std::move(value);
    }

    std::optional<AttributeValue> copyAttributeValue(std::string_view attribute) override {
        reads_.emplace_back(attribute);
        const auto entry = attributes_.find(attribute);
        return entry == attributes_.end() ? std::nullopt : std::optional(entry->second);
    }

    const std::vector<std::string>& reads() const { return reads_; }

  private:
    Attributes attributes_;
    std::vector<std::string> reads_;
};

/// An element that has only this attribute.
inline std::shared_ptr<FakeElement> elementWith(const std::string& attribute, AttributeValue value) {
    return std::make_shared<FakeElement>(FakeElement::Attributes{{attribute, std::move(value)}});
}

/// An element without texts that has these children.
inline std::shared_ptr<FakeElement> elementWithChildren(AccessibilityElements children) {
    return elementWith("AXChildren", std::move(children));
}

/// Applications' top elements by process identifier; the permission is there until a test takes it away.
class FakeAccessibilityTree final : public AccessibilityTree {
  public:
    void setTrusted(bool trusted) { trusted_ = trusted; }

    void setApplication(std::int32_t pid, std::shared_ptr<AccessibilityElement> element) {
        applications_[pid] = std::move(element);
    }

    bool isProcessTrusted() override { return trusted_; }

    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t pid) override {
        created_.push_back(pid);
        const auto entry = applications_.find(pid);
        return entry == applications_.end() ? std::make_shared<FakeElement>() : entry->second;
    }

    /// The processes whose top element was made, in order.
    const std::vector<std::int32_t>& created() const { return created_; }

  private:
    bool trusted_ = true;
    std::map<std::int32_t, std::shared_ptr<AccessibilityElement>> applications_;
    std::vector<std::int32_t> created_;
};

}  // namespace purlock::test
