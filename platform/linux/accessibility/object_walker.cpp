#include "platform/linux/accessibility/object_walker.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/linux/accessibility/element_rules.h"

namespace purlock::host_linux {

namespace {

constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";

constexpr std::size_t maximumUnderWay = 64;

BusReadLimits repliesLimits(const SnapshotLimits& limits) {
    return {.textBytes = limits.textBytes, .totalTextBytes = 8U << 20U, .values = 4 * limits.elements};
}

}  // namespace

ObjectWalker::ObjectWalker(BusConnection& connection, std::string busName, const SnapshotLimits& limits,
                           Finish onFinish)
    : connection_(connection),
      busName_(std::move(busName)),
      limits_(limits),
      onFinish_(std::move(onFinish)),
      texts_(limits) {}

void ObjectWalker::readTree() {
    addElement(std::string(applicationElementPath), 0, std::nullopt);
    sendQueued();
}

void ObjectWalker::readTexts(CachedTree tree) {
    snapshot_ = std::move(tree.snapshot);
    for (const TextElement& element : tree.textElements) askForText(element.node, element.path);
    sendQueued();
}

void ObjectWalker::addElement(std::string path, int depth, std::optional<std::uint32_t> parent) {
    if (snapshot_.nodes.size() >= limits_.elements || !seen_.insert(path).second) return;
    const auto node = static_cast<std::uint32_t>(snapshot_.nodes.size());
    snapshot_.nodes.emplace_back();
    snapshot_.nodes.back().path = path;
    if (parent) snapshot_.nodes[*parent].children.push_back(node);
    waiting_.push_back({node, depth, std::move(path), parent});
}

BusCall ObjectWalker::newCall(const std::string& path, const char* interface, const char* member) const {
    return connection_.newCall({busName_, path, interface, member});
}

/// The state is asked first: an element that is not on the screen is asked nothing further.
void ObjectWalker::askForState(const Element& element) {
    queue(newCall(element.path, accessibleInterface, "GetState"),
          [this, element](const BusIncoming& reply) { takeState(element, reply); });
}

void ObjectWalker::takeState(const Element& element, const BusIncoming& reply) {
    const auto states = reply.isError() ? std::nullopt : reply.reader(repliesLimits(limits_)).next();
    if (element.parent && !(states && isOnScreen(&*states))) {
        std::erase(snapshot_.nodes[*element.parent].children, element.node);
        return;
    }
    askForProperty(element, "Name");
    askForProperty(element, "Description");
    if (element.depth < limits_.depth) askForChildren(element);
}

/// One by one: the call for all properties at once makes applications of Qt 6.4 read beyond its arguments and
/// crash.
void ObjectWalker::askForProperty(const Element& element, const char* property) {
    auto call = newCall(element.path, propertiesInterface, "Get");
    call.append(accessibleInterface).append(property);
    const bool isName = std::string_view(property) == "Name";
    queue(std::move(call), [this, element, isName](const BusIncoming& reply) {
        if (reply.isError()) return;
        const auto value = reply.reader(repliesLimits(limits_)).next();
        const std::string* text = value ? value->text() : nullptr;
        if (isName) return takeName(element, text);
        snapshot_.nodes[element.node].description = texts_.take(text);
    });
}

void ObjectWalker::takeName(const Element& element, const std::string* name) {
    snapshot_.nodes[element.node].title = texts_.take(name);
    if (name != nullptr && element.depth > 0) askForRole(element, name->empty());
}

void ObjectWalker::askForRole(const Element& element, bool isNameless) {
    queue(newCall(element.path, accessibleInterface, "GetRole"),
          [this, element, isNameless](const BusIncoming& reply) {
              const auto role = reply.isError() ? std::nullopt : reply.reader(repliesLimits(limits_)).next();
              if (role && countsByContent(role->integer().value_or(0), isNameless)) askWhetherText(element);
          });
}

/// Asking an element without text for it would be less work, but GTK complains of that in the application's
/// own log.
void ObjectWalker::askWhetherText(const Element& element) {
    queue(newCall(element.path, accessibleInterface, "GetInterfaces"),
          [this, element](const BusIncoming& reply) {
              if (reply.isError()) return;
              const auto interfaces = reply.reader(repliesLimits(limits_)).next();
              if (!interfaces || interfaces->list() == nullptr) return;
              const bool hasText = std::ranges::find(*interfaces->list(), BusValue(textInterface)) !=
                                   interfaces->list()->end();
              if (hasText) askForText(element.node, element.path);
          });
}

void ObjectWalker::askForText(std::uint32_t node, const std::string& path) {
    if (contents_++ >= maximumContents) return;
    auto call = newCall(path, textInterface, "GetText");
    call.append(std::int32_t{0}).append(firstTextCharacters);
    queue(std::move(call), [this, node](const BusIncoming& reply) {
        if (reply.isError()) return;
        const auto text = reply.reader(repliesLimits(limits_)).nextText();
        if (text) snapshot_.nodes[node].value = texts_.take(&*text);
    });
}

void ObjectWalker::askForChildren(const Element& element) {
    queue(newCall(element.path, accessibleInterface, "GetChildren"),
          [this, element](const BusIncoming& reply) { takeChildren(element, reply); });
}

void ObjectWalker::takeChildren(const Element& element, const BusIncoming& reply) {
    if (reply.isError()) {
        failed_ = element.depth == 0;
        return;
    }
    BusReader reader = reply.reader(repliesLimits(limits_));
    if (!reader.enterArray()) return;
    while (const auto reference = reader.next()) {
        const BusValue* name = reference->at(0);
        const BusValue* path = reference->at(1);
        if (name == nullptr || path == nullptr || name->text() == nullptr || path->text() == nullptr) {
            continue;
        }
        if (*name->text() == busName_) addElement(*path->text(), element.depth + 1, element.node);
    }
}

void ObjectWalker::queue(BusCall call, Reply onReply) {
    calls_.emplace_back(std::move(call), std::move(onReply));
}

/// Keeps the pipe filled; finishes when nothing is left to ask and to hear.
void ObjectWalker::sendQueued() {
    while (sent_.underWay() < maximumUnderWay && !failed_) {
        if (calls_.empty()) {
            if (waiting_.empty()) break;
            const Element element = std::move(waiting_.front());
            waiting_.pop_front();
            askForState(element);
        }
        const auto [call, onReply] = std::move(calls_.front());
        calls_.pop_front();
        const bool sent =
            sent_.send(call, elementTimeLimit, [this, onReply = onReply](const BusIncoming& reply) {
                onReply(reply);
                sendQueued();
            });
        failed_ = !sent;
    }
    if (failed_) return finish(std::nullopt);
    if (sent_.underWay() == 0) finish(std::move(snapshot_));
}

/// Runs once: what is under way ends with it.
void ObjectWalker::finish(std::optional<Snapshot> snapshot) {
    sent_.clear();
    const Finish onFinish = onFinish_;  // may drop the walker
    onFinish(std::move(snapshot));
}

}  // namespace purlock::host_linux
