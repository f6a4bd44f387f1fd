#include "platform/linux/tray/notifier_item.h"

#include <utility>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

void appendPixmaps(BusWriter& writer, const std::vector<NotifierPixmap>& pixmaps) {
    writer.array("(iiay)", [&](BusWriter& array) {
        for (const NotifierPixmap& pixmap : pixmaps) {
            array.structure("iiay", [&](BusWriter& element) {
                element.append(pixmap.width).append(pixmap.height).appendBytes(pixmap.bytes);
            });
        }
    });
}

BusWrite text(const char* value) {
    return [value](BusWriter& writer) { writer.append(value); };
}

using Click = std::function<void(std::int32_t x, std::int32_t y)>;

void click(const Click& onClick, const BusRequest& request) {
    BusReader arguments = request.arguments();
    const auto x = arguments.nextNumber();
    const auto y = arguments.nextNumber();
    if (onClick) onClick(x, y);
    request.answer();
}

/// Without an icon the tray leaves the item out.
const char* statusOf(const NotifierLook& look) {
    return look.icon.empty() ? "Passive" : "Active";
}

}  // namespace

/// The names of the members are the protocol's.
BusInterface NotifierItem::interface() const {
    const BusWrite noPixmaps = [](BusWriter& writer) { appendPixmaps(writer, {}); };
    const auto activate = [this](const BusRequest& request) { click(events_.activated, request); };
    return {
        .path = itemPath,
        .name = "org.kde.StatusNotifierItem",
        .properties =
            {
                {"Category", "s", text("ApplicationStatus"), true},
                {"Id", "s", text("purlock"), true},
                {"Title", "s", text("Purlock"), true},
                {"Status", "s", [this](BusWriter& writer) { writer.append(statusOf(look_)); }},
                {"WindowId", "i", [](BusWriter& writer) { writer.append(std::int32_t{0}); }},
                {"IconThemePath", "s", text("")},
                {"IconName", "s", [this](BusWriter& writer) { writer.append(look_.iconName); }},
                {"IconPixmap", "a(iiay)", [this](BusWriter& writer) { appendPixmaps(writer, look_.icon); }},
                {"IconAccessibleDesc", "s", [this](BusWriter& writer) { writer.append(look_.description); }},
                {"OverlayIconName", "s", text("")},
                {"OverlayIconPixmap", "a(iiay)", noPixmaps},
                {"AttentionIconName", "s", text("")},
                {"AttentionIconPixmap", "a(iiay)", noPixmaps},
                {"AttentionMovieName", "s", text("")},
                {"ToolTip", "(sa(iiay)ss)", [this](BusWriter& writer) { appendToolTip(writer); }},
                {"ItemIsMenu", "b", [](BusWriter& writer) { writer.append(false); }},
                {"Menu", "o", [](BusWriter& writer) { writer.appendPath(NotifierMenu::path); }},
            },
        .methods =
            {
                {"Activate", "ii", "", activate},           // a click with the left button
                {"SecondaryActivate", "ii", "", activate},  // with the middle one
                {"ContextMenu", "ii", "",
                 [this](const BusRequest& request) { click(events_.menuWanted, request); }},
                {"Scroll", "is", "", [](const BusRequest& request) { request.answer(); }},
            },
        .signals =
            {
                {"NewTitle", ""},
                {"NewIcon", ""},
                {"NewAttentionIcon", ""},
                {"NewOverlayIcon", ""},
                {"NewToolTip", ""},
                {"NewStatus", "s"},
            },
    };
}

void NotifierItem::appendToolTip(BusWriter& writer) const {
    writer.structure("sa(iiay)ss", [this](BusWriter& toolTip) {
        toolTip.append("");
        appendPixmaps(toolTip, {});
        toolTip.append(escapedMarkup(look_.toolTip)).append("");
    });
}

NotifierItem::NotifierItem(BusConnection& connection, NotifierLook look, NotifierEvents events)
    : connection_(connection),
      events_(std::move(events)),
      look_(std::move(look)),
      menu_(connection, {openLabel, quitLabel}, [this](std::size_t entry) { chosen(entry); }),
      object_(connection, interface()),
      watcher_(connection, watcherName, [this](const std::string& owner) { watcherChanged(owner); }) {}

void NotifierItem::chosen(std::size_t entry) const {
    if (entry == 0) {
        events_.openChosen();
    } else {
        events_.quitChosen();
    }
}

void NotifierItem::watcherChanged(const std::string& owner) {
    if (owner.empty()) return setHosted(false);
    listenToHosts();
    registerItem();
    askForHost();
}

void NotifierItem::listenToHosts() {
    for (const char* change : {"Registered", "Unregistered"}) {
        watcher_.listen(joined({"path='", watcherPath, "',interface='", watcherName,
                                "',member='StatusNotifierHost", change, "'"}),
                        [this](const BusIncoming&) { askForHost(); });
    }
}

void NotifierItem::registerItem() {
    auto call = watcher_.newCall(watcherPath, watcherName, "RegisterStatusNotifierItem");
    call.append(connection_.uniqueName());
    connection_.send(call);
}

void NotifierItem::askForHost() {
    auto call = watcher_.newCall(watcherPath, propertiesInterface, "Get");
    call.append(watcherName).append("IsStatusNotifierHostRegistered");
    const bool sent = watcher_.call(call, busTimeLimit, [this](const BusIncoming& reply) {
        const auto answer = reply.isError() ? std::nullopt : reply.reader().next();
        setHosted(answer && answer->boolean().value_or(false));
    });
    if (!sent) setHosted(false);
}

void NotifierItem::setHosted(bool hosted) {
    if (std::exchange(known_, true) && hosted == hosted_) return;
    hosted_ = hosted;
    if (events_.hosted) events_.hosted(hosted);
}

void NotifierItem::setLook(NotifierLook look) {
    const NotifierLook before = std::exchange(look_, std::move(look));
    const bool sameName = before.iconName == look_.iconName;
    if (before.icon != look_.icon || !sameName || before.description != look_.description) {
        object_.emit("NewIcon");
    }
    if (before.toolTip != look_.toolTip) object_.emit("NewToolTip");
    if (before.icon.empty() != look_.icon.empty()) object_.emit("NewStatus", text(statusOf(look_)));
}

}  // namespace purlock::host_linux
