#include "platform/linux/tray/notifier_menu.h"

#include <systemd/sd-bus.h>

#include <array>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr std::uint32_t protocolVersion = 3;
constexpr std::uint32_t revision = 1;  // of a layout that never changes

/// An underscore would mark the letter after it as the entry's key.
std::string withoutKey(const std::string& label) {
    std::string escaped;
    for (const char byte : label) escaped.append(byte == '_' ? 2 : 1, byte);
    return escaped;
}

}  // namespace

/// What sd-bus calls. The names of the members are the protocol's. Which of the few properties are asked for
/// does not matter: all are told.
struct NotifierMenu::Object {
    static const NotifierMenu& menu(void* self) { return *static_cast<const NotifierMenu*>(self); }

    static int appendProperties(sd_bus_message* reply, const NotifierMenu& menu, std::int32_t id) {
        if (id == 0) return sd_bus_message_append(reply, "a{sv}", 1, "children-display", "s", "submenu");
        const std::string& label = menu.labels_[static_cast<std::size_t>(id - 1)];
        return sd_bus_message_append(reply, "a{sv}", 1, "label", "s", withoutKey(label).c_str());
    }

    static int appendEntry(sd_bus_message* reply, const NotifierMenu& menu, std::int32_t id, bool inside) {
        int result = sd_bus_message_open_container(reply, 'r', "ia{sv}av");
        if (result >= 0) result = sd_bus_message_append(reply, "i", id);
        if (result >= 0) result = appendProperties(reply, menu, id);
        if (result >= 0) result = sd_bus_message_open_container(reply, 'a', "v");
        const auto count = id == 0 && inside ? static_cast<std::int32_t>(menu.labels_.size()) : 0;
        for (std::int32_t child = 1; child <= count && result >= 0; ++child) {
            result = sd_bus_message_open_container(reply, 'v', "(ia{sv}av)");
            if (result >= 0) result = appendEntry(reply, menu, child, false);
            if (result >= 0) result = sd_bus_message_close_container(reply);
        }
        if (result >= 0) result = sd_bus_message_close_container(reply);
        return result < 0 ? result : sd_bus_message_close_container(reply);
    }

    /// Answers `call` with what `fill` writes.
    template <typename Fill>
    static int answer(sd_bus_message* call, Fill fill) {
        sd_bus_message* reply = nullptr;
        int result = sd_bus_message_new_method_return(call, &reply);
        const OwnedBusMessage owned(reply);
        if (result >= 0) result = fill(reply);
        return result < 0 ? result : sd_bus_send(nullptr, reply, nullptr);
    }

    static int refuse(sd_bus_error* error) {
        return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS, "There is no such entry.");
    }

    static int getLayout(sd_bus_message* call, void* self, sd_bus_error* error) {
        std::int32_t parent = 0;
        std::int32_t depth = 0;
        if (const int read = sd_bus_message_read(call, "ii", &parent, &depth); read < 0) return read;
        if (parent != 0 && !menu(self).isEntry(parent)) return refuse(error);
        return answer(call, [&](sd_bus_message* reply) {
            const int result = sd_bus_message_append(reply, "u", revision);
            return result < 0 ? result : appendEntry(reply, menu(self), parent, depth != 0);
        });
    }

    static int getGroupProperties(sd_bus_message* call, void* self, sd_bus_error*) {
        const void* ids = nullptr;
        std::size_t size = 0;
        if (const int read = sd_bus_message_read_array(call, 'i', &ids, &size); read < 0) return read;
        return answer(call, [&](sd_bus_message* reply) {
            int result = sd_bus_message_open_container(reply, 'a', "(ia{sv})");
            // Each entry once, however many numbers are named; none named stands for all.
            for (std::int32_t id = 0; id == 0 || menu(self).isEntry(id); ++id) {
                if (result < 0) return result;
                if (!names(static_cast<const std::int32_t*>(ids), size / sizeof id, id)) continue;
                result = sd_bus_message_open_container(reply, 'r', "ia{sv}");
                if (result >= 0) result = sd_bus_message_append(reply, "i", id);
                if (result >= 0) result = appendProperties(reply, menu(self), id);
                if (result >= 0) result = sd_bus_message_close_container(reply);
            }
            return result < 0 ? result : sd_bus_message_close_container(reply);
        });
    }

    static bool names(const std::int32_t* ids, std::size_t count, std::int32_t wanted) {
        for (std::size_t index = 0; index < count; ++index) {
            if (ids[index] == wanted) return true;
        }
        return count == 0;
    }

    static int getProperty(sd_bus_message* call, void* self, sd_bus_error* error) {
        std::int32_t id = 0;
        const char* name = "";
        if (const int read = sd_bus_message_read(call, "is", &id, &name); read < 0) return read;
        if (!menu(self).isEntry(id) || std::string(name) != "label") return refuse(error);
        const std::string& label = menu(self).labels_[static_cast<std::size_t>(id - 1)];
        return sd_bus_reply_method_return(call, "v", "s", withoutKey(label).c_str());
    }

    static int event(sd_bus_message* call, void* self, sd_bus_error*) {
        std::int32_t id = 0;
        const char* what = "";
        if (const int read = sd_bus_message_read(call, "is", &id, &what); read < 0) return read;
        menu(self).happened(id, what);
        return sd_bus_reply_method_return(call, "");
    }

    static int eventGroup(sd_bus_message* call, void* self, sd_bus_error*) {
        int read = sd_bus_message_enter_container(call, 'a', "(isvu)");
        while (read >= 0 && (read = sd_bus_message_enter_container(call, 'r', "isvu")) > 0) {
            std::int32_t id = 0;
            const char* what = "";
            read = sd_bus_message_read(call, "is", &id, &what);
            if (read >= 0) menu(self).happened(id, what);
            if (read >= 0) read = sd_bus_message_skip(call, "vu");
            if (read >= 0) read = sd_bus_message_exit_container(call);
        }
        return read < 0 ? read : sd_bus_reply_method_return(call, "ai", 0);
    }

    static int aboutToShow(sd_bus_message* call, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(call, "b", 0);
    }

    static int aboutToShowGroup(sd_bus_message* call, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(call, "aiai", 0, 0);
    }

    static int version(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                       sd_bus_error*) {
        return sd_bus_message_append(reply, "u", protocolVersion);
    }

    static int status(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                      sd_bus_error*) {
        return sd_bus_message_append(reply, "s", "normal");
    }

    static int textDirection(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                             sd_bus_error*) {
        return sd_bus_message_append(reply, "s", "ltr");
    }

    static int iconThemePath(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                             sd_bus_error*) {
        return sd_bus_message_append(reply, "as", 0);
    }

    static const sd_bus_vtable* table();
};

// The macros of sd-bus are C.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wold-style-cast"
const sd_bus_vtable* NotifierMenu::Object::table() {
    static const std::array members{
        sd_bus_vtable SD_BUS_VTABLE_START(0),
        sd_bus_vtable SD_BUS_PROPERTY("Version", "u", version, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("Status", "s", status, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("TextDirection", "s", textDirection, 0, 0),
        sd_bus_vtable SD_BUS_PROPERTY("IconThemePath", "as", iconThemePath, 0, 0),
        sd_bus_vtable SD_BUS_METHOD("GetLayout", "iias", "u(ia{sv}av)", getLayout,
                                    SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("GetGroupProperties", "aias", "a(ia{sv})", getGroupProperties,
                                    SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("GetProperty", "is", "v", getProperty, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("Event", "isvu", "", event, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("EventGroup", "a(isvu)", "ai", eventGroup, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("AboutToShow", "i", "b", aboutToShow, SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_METHOD("AboutToShowGroup", "ai", "aiai", aboutToShowGroup,
                                    SD_BUS_VTABLE_UNPRIVILEGED),
        sd_bus_vtable SD_BUS_SIGNAL("LayoutUpdated", "ui", 0),
        sd_bus_vtable SD_BUS_SIGNAL("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", 0),
        sd_bus_vtable SD_BUS_SIGNAL("ItemActivationRequested", "iu", 0),
        sd_bus_vtable SD_BUS_VTABLE_END};
    return members.data();
}
#pragma GCC diagnostic pop

NotifierMenu::NotifierMenu(BusConnection& connection, std::vector<std::string> labels,
                           std::function<void(std::size_t)> onChosen)
    : labels_(std::move(labels)), onChosen_(std::move(onChosen)) {
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_object_vtable(connection.handle(), &slot, path, menuInterface, Object::table(), this) >=
        0) {
        object_ = BusSlot(slot);
    }
}

void NotifierMenu::happened(std::int32_t id, const std::string& event) const {
    if (event == "clicked" && isEntry(id)) onChosen_(static_cast<std::size_t>(id - 1));
}

}  // namespace purlock::host_linux
