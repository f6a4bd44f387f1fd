#include "tests/macos/simulated/accessibility.h"

#include <ApplicationServices/ApplicationServices.h>

#include <algorithm>
#include <set>
#include <utility>

#include "tests/macos/simulated/core_foundation.h"

namespace purlock::simulated {

namespace {

Accessibility* current = nullptr;
std::set<CFTypeRef> limited;  // the references to elements for which a limit was set

CFTypeRef referenceTo(const Element& element) {
    const CFTypeRef reference = makeObject(elementType, &element);
    limited.erase(reference);  // a new object, where an old one may have been
    return reference;
}

CFTypeRef valueOf(const ElementValue& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return makeString(*text);
    if (const auto* const children = std::get_if<std::vector<Element>>(&value)) {
        std::vector<CFTypeRef> references;
        for (const Element& child : *children) references.push_back(referenceTo(child));
        return makeArray(references);
    }
    if (std::holds_alternative<MixedArray>(value)) {
        static const Element childless;
        return makeArray({referenceTo(childless), makeNumber(1)});
    }
    return makeNumber(1);
}

}  // namespace

Accessibility::Accessibility(Element application, bool trusted)
    : application_(std::move(application)), trusted_(trusted) {
    current = this;
}

Accessibility::~Accessibility() {
    current = nullptr;
}

}  // namespace purlock::simulated

using namespace purlock::simulated;

extern "C" {

CFStringRef kAXTrustedCheckOptionPrompt = CFSTR("AXTrustedCheckOptionPrompt");

Boolean AXIsProcessTrusted(void) {
    return current->isTrusted();
}

Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
    const void* key = nullptr;
    const void* value = nullptr;
    if (CFDictionaryGetCount(options) == 1) CFDictionaryGetKeysAndValues(options, &key, &value);
    if (key == kAXTrustedCheckOptionPrompt && value == kCFBooleanTrue) ++current->prompts;
    return current->isTrusted();
}

CFTypeID AXUIElementGetTypeID(void) {
    return elementType;
}

AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
    static const Element nobody;
    const Element& element = pid == Accessibility::pid ? current->application() : nobody;
    return static_cast<AXUIElementRef>(referenceTo(element));
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value) {
    ++current->questions;
    current->onQuestion();
    const auto& asked = *static_cast<const Element*>(payloadOf(element));
    if (!limited.contains(element)) ++current->questionsWithoutLimit;
    if (asked.answersLate) return kAXErrorCannotComplete;
    const auto found = asked.attributes.find(utf8Of(attribute));
    if (found == asked.attributes.end()) return kAXErrorNoValue;
    *value = valueOf(found->second);
    return kAXErrorSuccess;
}

AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float timeoutInSeconds) {
    if (payloadOf(element) != nullptr && timeoutInSeconds > 0) limited.insert(element);
    if (current != nullptr) current->longestLimit = std::max(current->longestLimit, timeoutInSeconds);
    return kAXErrorSuccess;
}
}
