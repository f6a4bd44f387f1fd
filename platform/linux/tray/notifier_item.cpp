#include "platform/linux/tray/notifier_item.h"

#include <systemd/sd-bus.h>

#include <array>
#include <utility>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr std::chrono::seconds timeLimit{5};

int appendPixmaps(sd_bus_message* message, const std::vector<NotifierPixmap>& pixmaps) {
    int result = sd_bus_message_open_container(message, 'a', "(iiay)");
    for (const NotifierPixmap& pixmap : pixmaps) {
        if (result < 0) return result;
        result = sd_bus_message_open_container(message, 'r', "iiay");
        if (result >= 0) result = sd_bus_message_append(message, "ii", pixmap.width, pixmap.height);
        if (result >= 0) {
            result = sd_bus_message_append_array(message, 'y', pixmap.bytes.data(), pixmap.bytes.size());
        }
        if (result >= 0) result = sd_bus_message_close_container(message);
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

/// Nothing to be seen: the tray leaves the item out.
const char* statusOf(const NotifierLook& look) {
    return look.icon.empty() ? "Passive" : "Active";
}

}  // namespace

/// What sd-bus calls. The names of the members are the protocol's.
struct NotifierItem::Object {
    static const NotifierLook& look(void* item) { return static_cast<NotifierItem*>(item)->look_; }

    static int text(sd_bus_message* reply, const char* value) {
        return sd_bus_message_append_basic(reply, 's', value);
    }

    static int empty(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                     sd_bus_error*) {
        return text(reply, "");
    }

    static int title(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                     sd_bus_error*) {
        return text(reply, "Purlock");
    }

    static int identifier(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                          sd_bus_error*) {
        return text(reply, "purlock");
    }

    static int category(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                        sd_bus_error*) {
        return text(reply, "ApplicationStatus");
    }

    static int status(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* item,
                      sd_bus_error*) {
        return text(reply, statusOf(look(item)));
    }

    static int description(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* item,
                           sd_bus_error*) {
        return text(reply, look(item).description.c_str());
    }

    static int noWindow(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                        sd_bus_error*) {
        return sd_bus_message_append(reply, "i", 0);
    }

    static int isMenu(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                      sd_bus_error*) {
        return sd_bus_message_append(reply, "b", 0);
    }

    static int menu(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                    sd_bus_error*) {
        return sd_bus_message_append(reply, "o", NotifierMenu::path);
    }

    static int icon(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* item,
                    sd_bus_error*) {
        return appendPixmaps(reply, look(item).icon);
    }

    static int iconName(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* item,
                        sd_bus_error*) {
        return text(reply, look(item).iconName.c_str());
    }

    static int noPixmaps(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                         sd_bus_error*) {
        return appendPixmaps(reply, {});
    }

    static int toolTip(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* item,
                       sd_bus_error*) {
        int result = sd_bus_message_open_container(reply, 'r', "sa(iiay)ss");
        if (result >= 0) result = text(reply, "");
        if (result >= 0) result = appendPixmaps(reply, {});
        if (result >= 0) result = text(reply, escapedMarkup(look(item).toolTip).c_str());
        if (result >= 0) result = text(reply, "");
        return result < 0 ? result : sd_bus_message_close_container(reply);
    }

    using Click = std::function<void(std::int32_t x, std::int32_t y)>;

    static int clicked(sd_bus_message* call, const Click& onClick) {
        std::int32_t x = 0;
        std::int32_t y = 0;
        if (const int result = sd_bus_message_read(call, "ii", &x, &y); result < 0) return result;
        if (onClick) onClick(x, y);
        return sd_bus_reply_method_return(call, "");
    }

    /// A click with the left or the middle button.
    static int activate(sd_bus_message* call, void* item, sd_bus_error*) {
        return clicked(call, static_cast<NotifierItem*>(item)->events_.activated);
    }

    static int contextMenu(sd_bus_message* call, void* item, sd_bus_error*) {
        return clicked(call, static_cast<NotifierItem*>(item)->events_.menuWanted);
    }

    static int scroll(sd_bus_message* call, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(call, "");
    }

    static const sd_bus_vtable* table();
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wold-style-cast"
const sd_bus_vtable* NotifierItem::Object::table() {
    static const std::array members{
        sd_bus_vtable SD_BUS_VTABLE_START(0),
        sd_bus_vtable SD_BUS_PROPERTY("Category", "s", category, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        sd_bus_vtable SD_BUS_PROPERTY("Id", "s", identifier, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        sd_bus_vtable SD_BUS_PROPERTY("Title", "s", title, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        sd_bus_vtable SD_BUS_PROPERTY("Status", "s", status, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("WindowId", "i", noWindow, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("IconThemePath", "s", empty, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("IconName", "s", iconName, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("IconPixmap", "a(iiay)", icon, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("IconAccessibleDesc", "s", description, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("OverlayIconName", "s", empty, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("OverlayIconPixmap", "a(iiay)", noPixmaps, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("AttentionIconName", "s", empty, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("AttentionIconPixmap", "a(iiay)", noPixmaps, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("AttentionMovieName", "s", empty, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", toolTip, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("ItemIsMenu", "b", isMenu, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("Menu", "o", menu, 0, 0),
        sd_bus_vtable SD_BUS_METHOD("Activate", "ii", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("SecondaryActivate", "ii", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("ContextMenu", "ii", "", contextMenu, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("Scroll", "is", "", scroll, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_SIGNAL("NewTitle", "", 0),
        sd_bus_vtable SD_BUS_SIGNAL("NewIcon", "", 0),
        sd_bus_vtable SD_BUS_SIGNAL("NewAttentionIcon", "", 0),
        sd_bus_vtable SD_BUS_SIGNAL("NewOverlayIcon", "", 0),
        sd_bus_vtable SD_BUS_SIGNAL("NewToolTip", "", 0),
        sd_bus_vtable SD_BUS_SIGNAL("NewStatus", "s", 0),
        sd_bus_vtable SD_BUS_VTABLE_END};
    return members.data();
}
#pragma GCC diagnostic pop

NotifierItem::NotifierItem(BusConnection& connection, NotifierLook look, NotifierEvents events)
    : connection_(connection),
      events_(std::move(events)),
      look_(std::move(look)),
      menu_(connection, {openLabel, quitLabel}, [this](std::size_t entry) { chosen(entry); }),
      watcher_(connection, watcherName, [this](const std::string& owner) { watcherChanged(owner); }) {
    exportObject();
}

void NotifierItem::chosen(std::size_t entry) const {
    if (entry == 0) {
        events_.openChosen();
    } else {
        events_.quitChosen();
    }
}

void NotifierItem::exportObject() {
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_object_vtable(connection_.handle(), &slot, itemPath, itemInterface, Object::table(),
                                 this) >= 0) {
        object_ = BusSlot(slot);
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
    auto call = watcher_.newCall(watcherPath, "org.freedesktop.DBus.Properties", "Get");
    call.append(watcherName).append("IsStatusNotifierHostRegistered");
    const bool sent = watcher_.call(call, timeLimit, [this](const BusIncoming& reply) {
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
    if (before.icon != look_.icon || !sameName || before.description != look_.description) tell("NewIcon");
    if (before.toolTip != look_.toolTip) tell("NewToolTip");
    if (before.icon.empty() != look_.icon.empty()) tellStatus();
}

void NotifierItem::tell(const char* signal) {
    sd_bus_emit_signal(connection_.handle(), itemPath, itemInterface, signal, "");
}

void NotifierItem::tellStatus() {
    sd_bus_emit_signal(connection_.handle(), itemPath, itemInterface, "NewStatus", "s", statusOf(look_));
}

}  // namespace purlock::host_linux
