#include "platform/linux/tray/notifier_menu.h"

#include <set>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr std::uint32_t protocolVersion = 3;
constexpr std::uint32_t revision = 1;  // of a layout that never changes

/// An underscore would mark the letter after it as the entry's key.
std::string withoutKey(const std::string& label) {
    std::string escaped;
    for (const char byte : label) escaped.append(byte == '_' ? 2 : 1, byte);
    return escaped;
}

void refuse(const BusRequest& request) {
    request.refuse("org.freedesktop.DBus.Error.InvalidArgs", "There is no such entry.");
}

}  // namespace

/// The names of the members are the protocol's.
BusInterface NotifierMenu::interface() const {
    return {
        .path = path,
        .name = "com.canonical.dbusmenu",
        .properties =
            {
                {"Version", "u", [](BusWriter& writer) { writer.append(protocolVersion); }},
                {"Status", "s", [](BusWriter& writer) { writer.append("normal"); }},
                {"TextDirection", "s", [](BusWriter& writer) { writer.append("ltr"); }},
                {"IconThemePath", "as", [](BusWriter& writer) { writer.emptyArray("s"); }},
            },
        .methods =
            {
                {"GetLayout", "iias", "u(ia{sv}av)",
                 [this](const BusRequest& request) { answerLayout(request); }},
                {"GetGroupProperties", "aias", "a(ia{sv})",
                 [this](const BusRequest& request) { answerGroupProperties(request); }},
                {"GetProperty", "is", "v", [this](const BusRequest& request) { answerProperty(request); }},
                {"Event", "isvu", "", [this](const BusRequest& request) { takeEvent(request); }},
                {"EventGroup", "a(isvu)", "ai", [this](const BusRequest& request) { takeEvents(request); }},
                {"AboutToShow", "i", "b",
                 [](const BusRequest& request) {
                     request.answer([](BusWriter& needsUpdate) { needsUpdate.append(false); });
                 }},
                {"AboutToShowGroup", "ai", "aiai",
                 [](const BusRequest& request) {
                     request.answer([](BusWriter& updates) { updates.emptyArray("i").emptyArray("i"); });
                 }},
            },
        .signals =
            {
                {"LayoutUpdated", "ui"},
                {"ItemsPropertiesUpdated", "a(ia{sv})a(ias)"},
                {"ItemActivationRequested", "iu"},
            },
    };
}

/// Writes all of an entry's few properties, also those that the caller did not ask for.
void NotifierMenu::appendProperties(BusWriter& writer, std::int32_t id) const {
    writer.array("{sv}", [&](BusWriter& properties) {
        if (id == 0) {
            properties.entry("children-display", "submenu");
        } else {
            properties.entry("label", withoutKey(labelOf(id)));
        }
    });
}

void NotifierMenu::appendEntry(BusWriter& writer, std::int32_t id, bool withChildren) const {
    writer.structure("ia{sv}av", [&](BusWriter& entry) {
        entry.append(id);
        appendProperties(entry, id);
        entry.array("v", [&](BusWriter& children) {
            for (std::int32_t child = 1; id == 0 && withChildren && isEntry(child); ++child) {
                children.variant("(ia{sv}av)", [&](BusWriter& value) { appendEntry(value, child, false); });
            }
        });
    });
}

void NotifierMenu::answerLayout(const BusRequest& request) const {
    BusReader arguments = request.arguments();
    const std::int32_t parent = arguments.nextNumber();
    const std::int32_t depth = arguments.nextNumber();
    if (parent != 0 && !isEntry(parent)) return refuse(request);
    request.answer([&](BusWriter& writer) {
        writer.append(revision);
        appendEntry(writer, parent, depth != 0);
    });
}

/// Each entry once, however many numbers are named; none named stands for all.
void NotifierMenu::answerGroupProperties(const BusRequest& request) const {
    BusReader arguments = request.arguments();
    std::set<std::int64_t> named;
    if (arguments.enterArray()) {
        while (const auto id = arguments.next()) named.insert(id->integer().value_or(-1));
    }
    request.answer([&](BusWriter& writer) {
        writer.array("(ia{sv})", [&](BusWriter& entries) {
            for (std::int32_t id = 0; id == 0 || isEntry(id); ++id) {
                if (!named.empty() && !named.contains(id)) continue;
                entries.structure("ia{sv}", [&](BusWriter& entry) {
                    entry.append(id);
                    appendProperties(entry, id);
                });
            }
        });
    });
}

void NotifierMenu::answerProperty(const BusRequest& request) const {
    BusReader arguments = request.arguments();
    const std::int32_t id = arguments.nextNumber();
    if (!isEntry(id) || arguments.nextText() != "label") return refuse(request);
    request.answer([&](BusWriter& writer) {
        writer.variant("s", [&](BusWriter& value) { value.append(withoutKey(labelOf(id))); });
    });
}

void NotifierMenu::takeEvent(const BusRequest& request) const {
    BusReader arguments = request.arguments();
    const std::int32_t id = arguments.nextNumber();
    happened(id, arguments.nextText().value_or(""));
    request.answer();
}

void NotifierMenu::takeEvents(const BusRequest& request) const {
    BusReader arguments = request.arguments();
    if (arguments.enterArray()) {
        while (const auto event = arguments.next()) {
            const BusValue* id = event->at(0);
            const BusValue* what = event->at(1);
            if (id == nullptr || what == nullptr || what->text() == nullptr) continue;
            happened(static_cast<std::int32_t>(id->integer().value_or(0)), *what->text());
        }
    }
    request.answer([](BusWriter& unknownEntries) { unknownEntries.emptyArray("i"); });
}

NotifierMenu::NotifierMenu(BusConnection& connection, std::vector<std::string> labels,
                           std::function<void(std::size_t)> onChosen)
    : labels_(std::move(labels)), onChosen_(std::move(onChosen)), object_(connection, interface()) {}

void NotifierMenu::happened(std::int32_t id, const std::string& event) const {
    if (event == "clicked" && isEntry(id)) onChosen_(static_cast<std::size_t>(id - 1));
}

}  // namespace purlock::host_linux
