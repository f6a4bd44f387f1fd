#include "platform/macos/accessibility/ax_tree.h"

#include <ApplicationServices/ApplicationServices.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "platform/macos/corefoundation/text.h"

namespace purlock::host_macos {

namespace {

using Patience = AXTree::Patience;

class AXElement final : public AccessibilityElement {
  public:
    AXElement(Owned<AXUIElementRef> element, std::shared_ptr<Patience> patience)
        : element_(std::move(element)), patience_(std::move(patience)) {
        // A limit holds for one element alone; a child has to be given its own.
        if (element_) AXUIElementSetMessagingTimeout(element_.get(), AXTree::answerLimit);
    }

    std::optional<AttributeValue> copyAttributeValue(std::string_view attribute) override {
        if (const auto known = answers_.find(attribute); known != answers_.end()) return known->second;
        if (!element_ || patience_->questions == 0 || patience_->now() >= patience_->walkEnds) {
            return std::nullopt;
        }
        return answers_.emplace(attribute, valueOf(ask(attribute))).first->second;
    }

  private:
    std::optional<AttributeValue> valueOf(const Owned<CFTypeRef>& value) const {
        if (!value) return std::nullopt;
        if (auto text = textOf(value.get())) return AttributeValue(std::move(*text));
        if (auto elements = elementsOf(value.get())) return AttributeValue(std::move(*elements));
        return AttributeValue(OtherAttributeType{});
    }

    Owned<CFTypeRef> ask(std::string_view attribute) {
        Owned<CFTypeRef> value;
        const auto name = makeText(attribute);
        if (!name) return value;
        --patience_->questions;
        const AXError error = AXUIElementCopyAttributeValue(element_.get(), name.get(), value.out());
        if (error == kAXErrorCannotComplete) patience_->questions = 0;
        return error == kAXErrorSuccess ? std::move(value) : Owned<CFTypeRef>();
    }

    /// Absent when the value is no array, or an array of anything but elements.
    std::optional<AccessibilityElements> elementsOf(CFTypeRef value) const {
        if (CFGetTypeID(value) != CFArrayGetTypeID()) return std::nullopt;
        const auto array = static_cast<CFArrayRef>(value);
        const auto count = std::min(static_cast<std::size_t>(CFArrayGetCount(array)), AXTree::mostChildren);
        AccessibilityElements elements;
        elements.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            const CFTypeRef child = CFArrayGetValueAtIndex(array, static_cast<CFIndex>(i));
            if (child == nullptr || CFGetTypeID(child) != AXUIElementGetTypeID()) return std::nullopt;
            auto element = Owned<AXUIElementRef>::retained(static_cast<AXUIElementRef>(child));
            elements.push_back(std::make_shared<AXElement>(std::move(element), patience_));
        }
        return elements;
    }

    const Owned<AXUIElementRef> element_;
    const std::shared_ptr<Patience> patience_;
    std::map<std::string, std::optional<AttributeValue>, std::less<>> answers_;  // as long as this is kept
};

}  // namespace

bool AXTree::isProcessTrusted() {
    return AXIsProcessTrusted() != 0;
}

std::shared_ptr<AccessibilityElement> AXTree::createApplication(std::int32_t pid) {
    const Time now = now_();
    if (!kept_ || kept_->pid != pid || now - kept_->seen >= keptFor) {
        const auto patience = std::make_shared<Patience>(Patience{.now = now_, .walkEnds = now + walkLimit});
        kept_ = {pid, now, patience,
                 std::make_shared<AXElement>(Owned(AXUIElementCreateApplication(pid)), patience)};
    }
    kept_->patience->walkEnds = now + walkLimit;
    return kept_->top;
}

void promptForAccessibility() {
    const void* keys[] = {kAXTrustedCheckOptionPrompt};
    const void* values[] = {kCFBooleanTrue};
    const Owned options(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                           &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    AXIsProcessTrustedWithOptions(options.get());  // the user answers some day, if at all
}

}  // namespace purlock::host_macos
