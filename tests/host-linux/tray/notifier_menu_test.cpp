#include <systemd/sd-bus.h>

#include <QCoreApplication>
#include <QCursor>
#include <QTimer>
#include <optional>
#include <string>

#include "tests/host-linux/tray/notifier_watcher.h"
#include "tests/host-linux/tray/tray_fixture.h"

namespace purlock::test {
namespace {

constexpr const char* menuPath = "/StatusNotifierItem/Menu";
constexpr const char* menuInterface = "com.canonical.dbusmenu";

class NotifierMenuTest : public TrayTest {
  protected:
    void SetUp() override {
        unsetenv("DISPLAY");
        watcher.emplace(bus.address(), NotifierWatcher::Host::present);
        ASSERT_TRUE(waitUntil([&] { return watcher->ready() && reader.ready(); }));
        makeItem();
        ASSERT_TRUE(runUntil([&] { return watcher->items().size() == 1; }));
    }

    /// Calls the menu with what `fill` writes and gives the reply to `read`. Whether there was one.
    template <typename Fill, typename Read>
    bool call(const char* method, Fill fill, Read read) {
        bool answered = false;
        reader.run([&](sd_bus* connection) {
            sd_bus_message* message = nullptr;
            sd_bus_message* reply = nullptr;
            sd_bus_message_new_method_call(connection, &message, watcher->items().back().c_str(), menuPath,
                                           menuInterface, method);
            fill(message);
            answered = sd_bus_call(connection, message, 0, nullptr, &reply) >= 0;
            if (answered) read(reply);
            sd_bus_message_unref(message);
            sd_bus_message_unref(reply);
        });
        return answered;
    }

    bool event(std::int32_t id, const char* what) {
        return call(
            "Event", [&](auto* message) { sd_bus_message_append(message, "isvu", id, what, "i", 0, 0U); },
            [](auto*) {});
    }

    /// The layout below `parent` as one text: "0[1 Open Purlock, ...]"; absent when it is refused.
    std::optional<std::string> layout(std::int32_t parent, std::int32_t depth) {
        std::string text;
        const bool answered = call(
            "GetLayout", [&](auto* message) { sd_bus_message_append(message, "iias", parent, depth, 0); },
            [&](auto* reply) {
                sd_bus_message_skip(reply, "u");
                text = entry(reply);
            });
        return answered ? std::optional(text) : std::nullopt;
    }

    static std::string entry(sd_bus_message* reply) {
        std::int32_t id = -1;
        sd_bus_message_enter_container(reply, 'r', "ia{sv}av");
        sd_bus_message_read(reply, "i", &id);
        std::string text = std::to_string(id) + properties(reply);
        sd_bus_message_enter_container(reply, 'a', "v");
        while (sd_bus_message_enter_container(reply, 'v', "(ia{sv}av)") > 0) {
            text += "[" + entry(reply) + "]";
            sd_bus_message_exit_container(reply);
        }
        sd_bus_message_exit_container(reply);
        sd_bus_message_exit_container(reply);
        return text;
    }

    static std::string properties(sd_bus_message* reply) {
        std::string text;
        sd_bus_message_enter_container(reply, 'a', "{sv}");
        while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
            const char* key = "";
            const char* value = "";
            sd_bus_message_read(reply, "sv", &key, "s", &value);
            text += std::string(" ") + key + "=" + value;
            sd_bus_message_exit_container(reply);
        }
        sd_bus_message_exit_container(reply);
        return text;
    }

    std::optional<NotifierWatcher> watcher;
    TestService reader{bus.address(), "", [](sd_bus_message*) { return false; }};
};

struct LayoutCase {
    const char* name;
    std::int32_t parent;
    std::int32_t depth;
    std::optional<std::string> expected;
};

TEST_F(NotifierMenuTest, Layouts) {
    const std::string whole = "0 children-display=submenu[1 label=Open Purlock][2 label=Quit Purlock]";
    const LayoutCase cases[] = {
        {"all", 0, -1, whole},
        {"one level", 0, 1, whole},
        {"the menu alone", 0, 0, "0 children-display=submenu"},
        {"an entry", 2, -1, "2 label=Quit Purlock"},
        {"beyond the last", 3, -1, std::nullopt},
        {"before the first", -1, -1, std::nullopt},
    };
    for (const LayoutCase& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(layout(row.parent, row.depth), row.expected);
    }
}

TEST_F(NotifierMenuTest, PropertiesOfTheEntriesThatAreNamed) {
    std::string text;
    const auto read = [&](auto* reply) {
        text.clear();
        std::int32_t id = -1;
        sd_bus_message_enter_container(reply, 'a', "(ia{sv})");
        while (sd_bus_message_enter_container(reply, 'r', "ia{sv}") > 0) {
            sd_bus_message_read(reply, "i", &id);
            text += "[" + std::to_string(id) + properties(reply) + "]";
            sd_bus_message_exit_container(reply);
        }
    };
    EXPECT_TRUE(call(
        "GetGroupProperties",
        [](auto* message) { sd_bus_message_append(message, "aias", 4, 2, 2, 99, -5, 0); }, read));
    EXPECT_EQ(text, "[2 label=Quit Purlock]");
    EXPECT_TRUE(call(
        "GetGroupProperties", [](auto* message) { sd_bus_message_append(message, "aias", 0, 0); }, read));
    EXPECT_EQ(text, "[0 children-display=submenu][1 label=Open Purlock][2 label=Quit Purlock]");
    const auto ask = [&](std::int32_t id, const char* name) {
        return call(
            "GetProperty", [&](auto* message) { sd_bus_message_append(message, "is", id, name); },
            [&](auto* reply) {
                const char* value = "";
                sd_bus_message_read(reply, "v", "s", &value);
                text = value;
            });
    };
    EXPECT_TRUE(ask(1, "label"));
    EXPECT_EQ(text, "Open Purlock");
    EXPECT_FALSE(ask(1, "icon"));
    EXPECT_FALSE(ask(0, "label"));
}

TEST_F(NotifierMenuTest, OpenIsAClickOnTheIcon) {
    EXPECT_TRUE(event(1, "hovered"));
    EXPECT_TRUE(event(0, "opened"));
    EXPECT_TRUE(event(7, "clicked"));
    runUntil([] { return false; }, std::chrono::milliseconds(30));
    EXPECT_EQ(clicks, 0);
    QCursor::setPos(400, 50);
    EXPECT_TRUE(event(1, "clicked"));
    EXPECT_TRUE(runUntil([&] { return clicks == 1; }));
    const Rect aroundThePointer{388, 738, 24, 24};
    EXPECT_EQ(button()->windowFrame(), aroundThePointer) << "the icon was never clicked";
    QCursor::setPos(700, 200);
    EXPECT_TRUE(call(
        "EventGroup",
        [](auto* message) {
            sd_bus_message_append(message, "a(isvu)", 2, 0, "opened", "i", 0, 0U, 1, "clicked", "i", 0, 0U);
        },
        [](auto*) {}));
    EXPECT_TRUE(runUntil([&] { return clicks == 2; }));
    EXPECT_EQ(button()->windowFrame(), aroundThePointer) << "where it was";
}

TEST_F(NotifierMenuTest, QuitEndsTheProgram) {
    QTimer::singleShot(std::chrono::seconds(5), [] { QCoreApplication::exit(1); });
    EXPECT_TRUE(event(2, "clicked"));
    EXPECT_TRUE(event(2, "clicked"));
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(clicks, 0);
}

}  // namespace
}  // namespace purlock::test
