#include "platform/linux/accessibility/application_reader.h"

#include <utility>
#include <vector>

#include "platform/linux/accessibility/cache_items.h"

namespace purlock::host_linux {

namespace {

/// A part of the whole time, so that a cache that does not answer leaves some for asking the elements.
constexpr std::chrono::milliseconds cacheLimit{1500};

/// An item is about thirty values and some 700 bytes of paths and interface names.
BusReadLimits itemsLimits(const SnapshotLimits& limits) {
    return {.textBytes = limits.textBytes,
            .totalTextBytes = 1024 * limits.elements,
            .values = 60 * limits.elements};
}

}  // namespace

ApplicationReader::ApplicationReader(BusThread& thread, BusConnection& connection, std::string busName,
                                     Finish onFinish)
    : connection_(connection),
      busName_(std::move(busName)),
      onFinish_(std::move(onFinish)),
      deadline_(thread) {
    deadline_.start(timeLimit, [this] { finish(std::nullopt); });
    askForItems();
}

void ApplicationReader::askForItems() {
    const auto call =
        connection_.newCall({busName_, "/org/a11y/atspi/cache", "org.a11y.atspi.Cache", "GetItems"});
    // A call that cannot be sent is left to the deadline.
    question_ = connection_.call(call, cacheLimit, [this](const BusIncoming& reply) { takeItems(reply); });
}

void ApplicationReader::takeItems(const BusIncoming& reply) {
    std::vector<CacheItem> items;
    BusReader reader = reply.reader(itemsLimits(limits_));
    if (!reply.isError() && reader.enterArray()) {
        while (items.size() < limits_.elements) {
            const auto value = reader.next();
            if (!value) break;
            if (auto item = parseCacheItem(*value, busName_)) items.push_back(std::move(*item));
        }
    }
    auto tree = buildTree(items, limits_);
    if (!tree) return newWalker().readTree();
    if (tree->textElements.empty()) return finish(std::move(tree->snapshot));
    newWalker().readTexts(std::move(*tree));
}

ObjectWalker& ApplicationReader::newWalker() {
    walker_ = std::make_unique<ObjectWalker>(
        connection_, busName_, limits_,
        [this](std::optional<Snapshot> snapshot) { finish(std::move(snapshot)); });
    return *walker_;
}

void ApplicationReader::finish(std::optional<Snapshot> snapshot) {
    deadline_.stop();
    if (const auto onFinish = std::exchange(onFinish_, {})) {
        onFinish(std::move(snapshot));  // may drop this reader
    }
}

}  // namespace purlock::host_linux
