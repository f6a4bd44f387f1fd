#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "source/accessibility_tree.h"

namespace purlock::host_macos {

/// Other applications' elements, over the accessibility interface of ApplicationServices. Main thread.
///
/// Each question is a call to the other application and waits for its answer, so the main thread asks little
/// at a time: a call is given up after `answerLimit`, and a walk that has asked for `walkLimit` is answered
/// from memory only. Answers are kept for `keptFor`, so the next walk goes on where the last one ended. An
/// application that did not answer once is not asked again meanwhile, nor for more than `mostQuestions`
/// attributes; whatever is not asked is absent.
class AXTree final : public AccessibilityTree {
  public:
    static constexpr float answerLimit = 0.1F;  // seconds
    static constexpr std::chrono::milliseconds walkLimit{100};
    static constexpr std::chrono::seconds keptFor{5};
    static constexpr std::size_t mostQuestions = 20000;
    static constexpr std::size_t mostChildren = 4096;  // of one element

    using Time = std::chrono::steady_clock::time_point;
    using Now = std::function<Time()>;
    explicit AXTree(Now now = std::chrono::steady_clock::now) : now_(std::move(now)) {}

    bool isProcessTrusted() override;

    /// Each call begins a walk.
    std::shared_ptr<AccessibilityElement> createApplication(std::int32_t pid) override;

    /// What the walks over one application may still ask; shared with its elements.
    struct Patience {
        Now now;
        Time walkEnds;
        std::size_t questions = mostQuestions;
    };

  private:
    struct Application {
        std::int32_t pid = 0;
        Time seen;
        std::shared_ptr<Patience> patience;
        std::shared_ptr<AccessibilityElement> top;
    };

    const Now now_;
    std::optional<Application> kept_;
};

/// Has the system ask the user, once for all, to let this process look into other applications. Answers at
/// once.
void promptForAccessibility();

}  // namespace purlock::host_macos
