#pragma once

#include <cstddef>
#include <memory>

#include "source/accessibility_tree.h"

namespace purlock::host_macos {

/// Other applications' elements, over the accessibility interface of ApplicationServices. Main thread.
///
/// Each question is a call to the other application and waits for its answer. So that the main thread never
/// waits for long, a call is given up after `answerLimit`, an application that did not answer once is not
/// asked again during the same walk, and a walk asks for at most `mostQuestions` attributes; whatever is not
/// asked is absent.
class AXTree final : public AccessibilityTree {
  public:
    static constexpr float answerLimit = 0.25F;  // seconds
    static constexpr std::size_t mostQuestions = 20000;
    static constexpr std::size_t mostChildren = 4096;  // of one element

    bool isProcessTrusted() override;
    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t pid) override;
};

/// Has the system ask the user, once for all, to let this process look into other applications. Answers at
/// once.
void promptForAccessibility();

}  // namespace purlock::host_macos
