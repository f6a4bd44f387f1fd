#include "base/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace purlock {

void fatalStop(std::string_view reason) {
    std::fprintf(stderr, "purlock: %.*s\n", static_cast<int>(reason.size()), reason.data());
    std::abort();
}

}  // namespace purlock
