// Feeds any bytes to the property-list parser: it must neither crash nor hang nor read outside of them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/linux/propertylist/property_list_parser.h"

extern "C" {

// libFuzzer's own: mutates in place and returns the new size.
std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximumSize);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string list(reinterpret_cast<const char*>(data), size);
    purlock::host_linux::parsePropertyList(list);
    return 0;
}

/// Puts the magic back, and often a trailer that points into the file; otherwise next to nothing gets past
/// the first look at a binary list.
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximumSize,
                                    unsigned seed) {
    size = LLVMFuzzerMutate(data, size, maximumSize);
    constexpr std::size_t smallest = 8 + 32;
    if (seed % 4 == 0 || size < smallest) return size;
    if (seed % 4 == 1) {
        std::memcpy(data, "<plist>", 7);
        return size;
    }
    std::memcpy(data, "bplist00", 8);
    std::uint8_t* trailer = data + size - 32;
    const std::size_t objects = 1 + seed / 4 % std::min<std::size_t>(16, size - smallest + 1);
    std::fill(trailer, trailer + 32, std::uint8_t{0});
    const std::size_t table = size - 32 - std::min(objects, size - smallest);
    trailer[6] = 1;
    trailer[7] = 1;
    trailer[15] = static_cast<std::uint8_t>(size - 32 - table);
    trailer[30] = static_cast<std::uint8_t>(table >> 8);
    trailer[31] = static_cast<std::uint8_t>(table);
    for (std::size_t i = table; i < size - 32; ++i) {
        data[i] = static_cast<std::uint8_t>(
            8 + data[i] % std::max<std::size_t>(1, std::min<std::size_t>(table, 255) - 8));
    }
    return size;
}
}
