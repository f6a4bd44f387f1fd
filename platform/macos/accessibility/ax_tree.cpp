#include "platform/macos/accessibility/ax_tree.h"

#include <ApplicationServices/ApplicationServices.h>

#include <algorithm>
#include <utility>

#include "platform/macos/corefoundation/text.h"

namespace purlock::host_macos {

namespace {

/// What one walk may still ask.
struct Patience {
    std::size_t questions = AXTree::mostQuestions;
};

class AXElement final : public AccessibilityElement {
  public:
    AXElement(Owned<AXUIElementRef> element, std::shared_ptr<Patience> patience)
        : element_(std::move(element)), patience_(std::move(patience)) {
        // A limit holds for one element alone; a child has to be given its own.
        if (element_) AXUIElementSetMessagingTimeout(element_.get(), AXTree::answerLimit);
    }

    std::optional<AttributeValue> copyAttributeValue(std::string_view attribute) override {
        const Owned<CFTypeRef> value = ask(attribute);
        if (!value) return std::nullopt;
        if (auto text = textOf(value.get())) return AttributeValue(std::move(*text));
        if (auto elements = elementsOf(value.get())) return AttributeValue(std::move(*elements));
        return AttributeValue(OtherAttributeType{});
    }

  private:
    Owned<CFTypeRef> ask(std::string_view attribute) {
        Owned<CFTypeRef> value;
        const auto name = makeText(attribute);
        if (!element_ || !name || patience_->questions == 0) return value;
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
};

}  // namespace

bool AXTree::isProcessTrusted() {
    return AXIsProcessTrusted() != 0;
}

std::shared_ptr<AccessibilityElement> AXTree::createApplication(std::int32_t pid) {
    return std::make_shared<AXElement>(Owned(AXUIElementCreateApplication(pid)),
                                       std::make_shared<Patience>());
}

void promptForAccessibility() {
    const void* keys[] = {kAXTrustedCheckOptionPrompt};
    const void* values[] = {kCFBooleanTrue};
    const Owned options(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                           &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    AXIsProcessTrustedWithOptions(options.get());  // the user answers some day, if at all
}

}  // namespace purlock::host_macos
