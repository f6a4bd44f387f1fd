#include "base/thread_start.h"

#include <system_error>
#include <utility>

namespace purlock {

std::optional<std::thread> startThread(std::function<void()> body) {
    try {
        return std::thread(std::move(body));
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

}  // namespace purlock
