#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace purlock::simulated {

struct Element;

/// A value that is neither a text nor an array.
struct OtherValue {};
/// An array that holds something else beside the elements.
struct MixedArray {};
using ElementValue = std::variant<std::string, std::vector<Element>, OtherValue, MixedArray>;

/// An element of another application's window.
struct Element {
    std::map<std::string, ElementValue> attributes;
    bool answersLate = false;  // not within the caller's limit
};

/// The accessibility interface over one application of the test's making. References to elements count among
/// the live objects of CoreFoundation.
class Accessibility {
  public:
    static constexpr int pid = 42;  // of the application

    explicit Accessibility(Element application, bool trusted = true);
    ~Accessibility();
    Accessibility(const Accessibility&) = delete;
    Accessibility& operator=(const Accessibility&) = delete;

    /// How often an attribute was asked for.
    std::size_t questions = 0;
    /// How often one was asked of an element for which no limit was set.
    std::size_t questionsWithoutLimit = 0;
    /// The longest limit that was set, in seconds.
    float longestLimit = 0;
    /// Called with each question: the time that the application takes, say.
    std::function<void()> onQuestion = [] {};
    /// How often the user was asked for the permission.
    std::size_t prompts = 0;

    const Element& application() const { return application_; }
    bool isTrusted() const { return trusted_; }

  private:
    const Element application_;
    const bool trusted_;
};

}  // namespace purlock::simulated
