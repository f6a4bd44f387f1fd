#include <cstdlib>

#include "platform/linux/accessibility/cache_items.h"
#include "tests/fuzz/byte_values.h"

namespace {

using namespace purlock::host_linux;

constexpr const char* words[] = {
    ":1.7", "/org/a11y/atspi/accessible/root", "/a", "/b", "/c", "org.a11y.atspi.Text", ""};

/// A reference to one of a few objects, so that elements, parents and children meet.
BusValue reference(FuzzedDataProvider& bytes) {
    constexpr const char* paths[] = {"/org/a11y/atspi/accessible/root", "/a", "/b", "/c", "/d"};
    return BusValue(
        BusValue::List{BusValue(":1.7"), BusValue(paths[bytes.ConsumeIntegralInRange<std::size_t>(0, 4)])});
}

BusValue likelyItem(FuzzedDataProvider& bytes) {
    BusValue::List fields{reference(bytes), reference(bytes), reference(bytes)};
    if (bytes.ConsumeBool()) {
        fields.emplace_back(bytes.ConsumeIntegral<std::int64_t>());
        fields.emplace_back(std::int64_t{0});
    } else {
        BusValue::List children;
        while (bytes.remaining_bytes() > 0 && bytes.ConsumeBool()) children.push_back(reference(bytes));
        fields.emplace_back(std::move(children));
    }
    fields.emplace_back(BusValue::List{BusValue("org.a11y.atspi.Text")});
    fields.emplace_back(bytes.ConsumeRandomLengthString(8));
    fields.emplace_back(std::int64_t{0});
    fields.emplace_back(bytes.ConsumeRandomLengthString(8));
    fields.emplace_back(BusValue::List{BusValue(bytes.ConsumeIntegral<std::int64_t>())});
    return BusValue(std::move(fields));
}

/// Every node has one parent, which comes before it: no cycle, and nothing that is listed twice.
void check(const Snapshot& snapshot, const SnapshotLimits& limits) {
    if (snapshot.nodes.size() > limits.elements) std::abort();
    std::size_t children = 0;
    for (std::size_t i = 0; i < snapshot.nodes.size(); ++i) {
        for (const std::uint32_t child : snapshot.nodes[i].children) {
            if (child <= i || child >= snapshot.nodes.size()) std::abort();
            ++children;
        }
    }
    if (children + 1 != snapshot.nodes.size()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider bytes(data, size);
    const SnapshotLimits limits{.elements = 4, .textBytes = 6, .totalTextBytes = 12, .depth = 3};
    std::vector<CacheItem> items;
    while (bytes.remaining_bytes() > 0) {
        const BusValue value =
            bytes.ConsumeBool() ? likelyItem(bytes) : purlock::test::valueFrom(bytes, words);
        if (auto item = parseCacheItem(value, ":1.7")) items.push_back(std::move(*item));
    }
    if (const auto tree = buildTree(items, limits)) check(tree->snapshot, limits);
    return 0;
}
