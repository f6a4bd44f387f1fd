#pragma once

#include <string>

#include "ui/view.h"

namespace purlock {

/// What a screen reader says for an element.
struct AccessibleWords {
    std::string name;         // empty for an ornament, which is not read
    std::string description;  // of a control: its purpose, where the name lacks it

    bool operator==(const AccessibleWords&) const = default;
};

/// A control is called by the words on it, and its label describes it. Everything else is called by its
/// label; without one, by the words on it. What has neither is called by its help. Pure; any thread.
AccessibleWords accessibleWords(const View& view);

}  // namespace purlock
