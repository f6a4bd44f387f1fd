#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>

#include "platform/linux/accessibility/cache_items.h"
#include "platform/linux/accessibility/snapshot.h"
#include "platform/linux/dbus/bus_calls.h"
#include "platform/linux/dbus/bus_connection.h"

namespace purlock::host_linux {

/// How much of an element's content is asked for; a badge is a few words.
inline constexpr std::int32_t firstTextCharacters = 512;

/// Reads an application's tree element by element, for toolkits without a useful cache, and the texts of the
/// elements of a tree that is there already. On the bus thread; owned by an `ApplicationReader`, which limits
/// its time.
///
/// Breadth first, with at most 64 calls under way. An element costs four calls (states, name, description,
/// children), one where it is not on the screen, and up to three more where its content may count.
class ObjectWalker {
  public:
    using Finish = std::function<void(std::optional<Snapshot>)>;

    ObjectWalker(BusConnection& connection, std::string busName, const SnapshotLimits& limits,
                 Finish onFinish);

    /// Reads everything. Finishes with nothing when the application's own element does not answer.
    void readTree();

    /// Reads the contents of those elements, at most `maximumContents` of them.
    void readTexts(CachedTree tree);

  private:
    struct Element {
        std::uint32_t node = 0;
        int depth = 0;
        std::string path;
        std::optional<std::uint32_t> parent;
    };
    using Reply = std::function<void(const BusIncoming&)>;

    void askForState(const Element& element);
    void takeState(const Element& element, const BusIncoming& reply);
    void askForRole(const Element& element, bool isNameless);
    void askForProperty(const Element& element, const char* property);
    void askForChildren(const Element& element);
    void askWhetherText(const Element& element);
    void askForText(std::uint32_t node, const std::string& path);
    void takeName(const Element& element, const std::string* name);
    void takeChildren(const Element& element, const BusIncoming& reply);
    void addElement(std::string path, int depth, std::optional<std::uint32_t> parent);

    void queue(BusCall call, Reply onReply);
    void sendQueued();
    void finish(std::optional<Snapshot> snapshot);
    BusCall newCall(const std::string& path, const char* interface, const char* member) const;

    BusConnection& connection_;
    const std::string busName_;
    const SnapshotLimits limits_;
    const Finish onFinish_;
    TextBudget texts_;
    Snapshot snapshot_;
    std::unordered_set<std::string> seen_;
    std::deque<Element> waiting_;                  // known, not yet asked
    std::deque<std::pair<BusCall, Reply>> calls_;  // to be sent
    std::size_t contents_ = 0;                     // asked for so far
    bool failed_ = false;
    BusCalls sent_{connection_};
};

}  // namespace purlock::host_linux
