#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace purlock {

class AccessibilityElement;
using AccessibilityElements = std::vector<std::shared_ptr<AccessibilityElement>>;

/// An attribute's value that is neither a text nor an array of elements: a number, a switch, a range.
struct OtherAttributeType {
    bool operator==(const OtherAttributeType&) const = default;
};

/// A text is UTF-8; an array keeps the order that the application gives.
using AttributeValue = std::variant<OtherAttributeType, std::string, AccessibilityElements>;

/// One element of another application's window, as assistive technology sees it.
///
/// A new object at each look, valid for as long as someone keeps it, also when the element behind it has
/// gone. Main thread only.
class AccessibilityElement {
  public:
    AccessibilityElement() = default;
    virtual ~AccessibilityElement() = default;
    AccessibilityElement(const AccessibilityElement&) = delete;
    AccessibilityElement& operator=(const AccessibilityElement&) = delete;

    /// The value of "AXValue", "AXTitle", "AXDescription", "AXHelp" or "AXChildren"; absent when the element
    /// does not have it or cannot be asked. The content is the other application's and may be anything.
    virtual std::optional<AttributeValue> copyAttributeValue(std::string_view attribute) = 0;
};

/// Other applications' elements. Owned by the host, which outlives its users; main thread only.
///
/// No call waits for another application: a host that has no answer at hand gives "absent" and has it later.
/// Where an application could answer with endless texts or with cycles among its children, the host cuts them
/// short, so that looking at every element to a depth of a dozen takes no longer than the main thread can
/// spare. On macOS this is AXIsProcessTrusted, AXUIElementCreateApplication and
/// AXUIElementCopyAttributeValue.
class AccessibilityTree {
  public:
    AccessibilityTree() = default;
    virtual ~AccessibilityTree() = default;
    AccessibilityTree(const AccessibilityTree&) = delete;
    AccessibilityTree& operator=(const AccessibilityTree&) = delete;

    /// True if this process may look into other applications. Never asks the user.
    virtual bool isProcessTrusted() = 0;

    /// The top element of the application; never null. Of a process without elements every attribute is
    /// absent.
    virtual std::shared_ptr<AccessibilityElement> createApplication(std::int32_t pid) = 0;
};

}  // namespace purlock
