#include "platform/linux/accessibility/snapshot.h"

namespace purlock::host_linux {

std::optional<std::string> TextBudget::take(const std::string* text) {
    if (text == nullptr || text->empty() || text->size() > limits_.textBytes || text->size() > left_) {
        return std::nullopt;
    }
    left_ -= text->size();
    return *text;
}

}  // namespace purlock::host_linux
