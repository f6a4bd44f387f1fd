#pragma once

#include <string>

namespace purlock {

/// The words in which texts speak of the operating system. A host may hand in its own; as it stands, a value
/// of this type speaks of macOS.
struct SystemWords {
    std::string mixer = "CoreAudio";  // what mixes and converts the sound of all applications
};

}  // namespace purlock
