#include <systemd/sd-bus.h>

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/host-linux/tray/notifier_watcher.h"
#include "tests/host-linux/tray/tray_fixture.h"
#include "tests/support/temporary_folder.h"

namespace purlock::test {
namespace {

using Host = NotifierWatcher::Host;

constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";

class NotifierItemTest : public TrayTest {
  protected:
    void SetUp() override { unsetenv("DISPLAY"); }

    /// A watcher with a tray, and the item in it.
    void startHosted() {
        watcher.emplace(bus.address(), Host::present);
        ASSERT_TRUE(waitUntil([&] { return watcher->ready() && reader.ready(); }));
        makeItem();
        ASSERT_TRUE(runUntil([&] { return watcher->items().size() == 1; }));
    }

    std::string item() { return watcher->items().back(); }

    std::string text(const char* property) {
        std::string value;
        reader.run([&](sd_bus* connection) {
            char* read = nullptr;
            if (sd_bus_get_property_string(connection, item().c_str(), itemPath, itemInterface, property,
                                           nullptr, &read) >= 0) {
                value = read;
            } else {
                value = "(none)";
            }
            free(read);
        });
        return value;
    }

    /// The title of the tip; the other parts are empty.
    std::string toolTip() {
        std::string value;
        reader.run([&](sd_bus* connection) {
            sd_bus_message* reply = nullptr;
            if (sd_bus_get_property(connection, item().c_str(), itemPath, itemInterface, "ToolTip", nullptr,
                                    &reply, "(sa(iiay)ss)") < 0) {
                return;
            }
            const char* title = "";
            sd_bus_message_enter_container(reply, 'r', nullptr);
            sd_bus_message_skip(reply, "sa(iiay)");
            sd_bus_message_read(reply, "s", &title);
            value = title;
            sd_bus_message_unref(reply);
        });
        return value;
    }

    struct Pixmap {
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> bytes;
        std::uint8_t at(int x, int y, int part) const {
            return bytes.at(static_cast<std::size_t>((y * width + x) * 4 + part));
        }
    };
    std::vector<Pixmap> icon() {
        std::vector<Pixmap> pixmaps;
        reader.run([&](sd_bus* connection) {
            sd_bus_message* reply = nullptr;
            if (sd_bus_get_property(connection, item().c_str(), itemPath, itemInterface, "IconPixmap",
                                    nullptr, &reply, "a(iiay)") < 0) {
                return;
            }
            sd_bus_message_enter_container(reply, 'a', "(iiay)");
            while (sd_bus_message_enter_container(reply, 'r', "iiay") > 0) {
                Pixmap pixmap;
                const void* bytes = nullptr;
                std::size_t size = 0;
                sd_bus_message_read(reply, "ii", &pixmap.width, &pixmap.height);
                sd_bus_message_read_array(reply, 'y', &bytes, &size);
                const auto* begin = static_cast<const std::uint8_t*>(bytes);
                pixmap.bytes.assign(begin, begin + size);
                pixmaps.push_back(pixmap);
                sd_bus_message_exit_container(reply);
            }
            sd_bus_message_unref(reply);
        });
        return pixmaps;
    }

    void call(const char* method, int x, int y) {
        reader.run([&](sd_bus* connection) {
            sd_bus_error error{};
            EXPECT_GE(sd_bus_call_method(connection, item().c_str(), itemPath, itemInterface, method, &error,
                                         nullptr, "ii", x, y),
                      0)
                << error.message;
            sd_bus_error_free(&error);
        });
    }

    void listenToSignals() {
        reader.run([&](sd_bus* connection) {
            sd_bus_match_signal(connection, nullptr, nullptr, itemPath, itemInterface, nullptr, &count, this);
        });
    }
    std::map<std::string, int> signals() {
        std::map<std::string, int> copy;
        reader.run([&](sd_bus*) { copy = signals_; });
        return copy;
    }

    std::optional<NotifierWatcher> watcher;
    TestService reader{bus.address(), "", [](sd_bus_message*) { return false; }};

  private:
    static int count(sd_bus_message* signal, void* self, sd_bus_error*) {
        ++static_cast<NotifierItemTest*>(self)->signals_[sd_bus_message_get_member(signal)];
        return 0;
    }

    std::map<std::string, int> signals_;  // on the reader's thread
};

TEST_F(NotifierItemTest, DescribesItself) {
    startHosted();
    ASSERT_TRUE(runUntil([&] { return toolTip() == "Purlock — Idle"; })) << toolTip();
    EXPECT_EQ(text("Category"), "ApplicationStatus");
    EXPECT_EQ(text("Id"), "purlock");
    EXPECT_EQ(text("Title"), "Purlock");
    EXPECT_EQ(text("Status"), "Active");
    EXPECT_EQ(text("IconName"), "");
    EXPECT_EQ(text("IconAccessibleDesc"), "Idle");
    EXPECT_EQ(text("AttentionIconName"), "");
    EXPECT_EQ(text("OverlayIconName"), "");
    std::vector<int> sizes;
    for (const Pixmap& pixmap : icon()) {
        EXPECT_EQ(pixmap.width, pixmap.height);
        EXPECT_EQ(pixmap.bytes.size(), static_cast<std::size_t>(pixmap.width * pixmap.height * 4));
        sizes.push_back(pixmap.width);
    }
    EXPECT_EQ(sizes, (std::vector{16, 22, 24, 32, 48, 64, 96}));
}

TEST_F(NotifierItemTest, NamesTheThemesDrawingOfATemplateWhereItIsInstalled) {
    const TemporaryFolder installed;
    setenv("XDG_DATA_DIRS", installed.path().c_str(), 1);
    installed.write("icons/hicolor/symbolic/apps/purlock-idle-symbolic.svg", "<svg/>");
    startHosted();
    EXPECT_TRUE(runUntil([&] { return text("IconName") == "purlock-idle-symbolic"; }));
    button()->setImage(greenIcon);
    EXPECT_TRUE(runUntil([&] { return text("IconName").empty(); })) << "it has its own colours";
    unsetenv("XDG_DATA_DIRS");
}

TEST_F(NotifierItemTest, ShowsAnotherIconAndTipAndTellsTheTrayOnce) {
    startHosted();
    ASSERT_TRUE(runUntil([&] { return toolTip() == "Purlock — Idle"; }));
    listenToSignals();
    button()->setImage(greenIcon);
    button()->setToolTip("Purlock — <b>Bit-perfect</b> & more");
    ASSERT_TRUE(runUntil([&] { return text("IconAccessibleDesc") == "Bit-perfect"; }));
    EXPECT_TRUE(runUntil([&] { return toolTip() == "Purlock — &lt;b&gt;Bit-perfect&lt;/b&gt; &amp; more"; }))
        << toolTip();
    const std::map<std::string, int> once{{"NewIcon", 1}, {"NewToolTip", 1}};
    EXPECT_TRUE(runUntil([&] { return signals() == once; }));
    button()->setImage(greenIcon);
    button()->setToolTip("Purlock — <b>Bit-perfect</b> & more");
    runUntil([] { return false; }, std::chrono::milliseconds(30));
    EXPECT_EQ(signals(), once) << "what is the same is no news";
    const Pixmap largest = icon().back();
    EXPECT_EQ(largest.at(48, 16, 0), 255) << "alpha comes first";
    EXPECT_EQ(largest.at(48, 16, 1), 0x21);
    EXPECT_EQ(largest.at(48, 16, 2), 0x94);
    EXPECT_EQ(largest.at(48, 16, 3), 0x4A);
    EXPECT_EQ(largest.at(0, 0, 0), 0);
}

TEST_F(NotifierItemTest, AnIconWithoutDrawingIsLeftOut) {
    startHosted();
    button()->setImage({"no.such.symbol", "Idle", 14, FontWeight::semibold, {}});
    EXPECT_TRUE(runUntil([&] { return text("Status") == "Passive"; }));
    EXPECT_TRUE(icon().empty());
    button()->setImage(idleIcon);
    EXPECT_TRUE(runUntil([&] { return text("Status") == "Active"; }));
}

TEST_F(NotifierItemTest, AClickIsWhereItWas) {
    startHosted();
    EXPECT_EQ(button()->windowFrame(), Rect{}) << "before the first click nobody knows";
    int expected = 0;
    for (const char* method : {"Activate", "SecondaryActivate"}) {
        SCOPED_TRACE(method);
        call(method, 300 + expected, 10);
        ++expected;
        EXPECT_TRUE(runUntil([&] { return clicks == expected; }));
        // The toolkit's screen without a display is 800 x 800.
        EXPECT_EQ(button()->windowFrame(), (Rect{300.0 + expected - 1 - 12, 800 - 10 - 12, 24, 24}));
    }
}

TEST_F(NotifierItemTest, ATrayThatShowsNoMenuHasTheProgramShowItsOwn) {
    startHosted();
    call("ContextMenu", 300, 10);
    const auto menu = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };
    ASSERT_TRUE(runUntil([&] { return menu() != nullptr; }));
    EXPECT_EQ(menu()->pos(), QPoint(300, 10));
    EXPECT_EQ(clicks, 0);
    menu()->actions().at(0)->trigger();  // "Open Purlock"
    EXPECT_EQ(clicks, 1);
    menu()->close();
}

TEST_F(NotifierItemTest, AClickWithoutAPlaceIsWhereThePointerIs) {
    startHosted();
    QCursor::setPos(500, 40);
    for (const auto& [x, y] : {std::pair(0, 0), std::pair(5000, 3)}) {
        clicks = 0;
        call("Activate", x, y);
        EXPECT_TRUE(runUntil([&] { return clicks == 1; }));
        EXPECT_EQ(button()->windowFrame(), (Rect{488, 748, 24, 24}));
    }
}

TEST_F(NotifierItemTest, AFloodOfClicksIsOne) {
    startHosted();
    for (int count = 0; count < 1000; ++count) call("Activate", 1, 1);
    EXPECT_TRUE(runUntil([&] { return clicks > 0; }));
    EXPECT_EQ(clicks, 1);
    call("Activate", 1, 1);
    EXPECT_TRUE(runUntil([&] { return clicks == 2; })) << "the next one counts again";
}

TEST_F(NotifierItemTest, AWatcherThatComesLaterGetsTheItem) {
    makeItem();
    runUntil([] { return false; }, std::chrono::milliseconds(50));
    watcher.emplace(bus.address(), Host::present);
    EXPECT_TRUE(runUntil([&] { return watcher->items().size() == 1; }));
}

TEST_F(NotifierItemTest, AWatcherThatDiesAndReturnsGetsTheItemAgain) {
    startHosted();
    for (int round = 0; round < 3; ++round) {
        watcher.reset();
        watcher.emplace(bus.address(), Host::present);
        ASSERT_TRUE(runUntil([&] { return watcher->items().size() == 1; }));
        EXPECT_EQ(text("Id"), "purlock");
    }
}

TEST_F(NotifierItemTest, ABusThatDiesAndReturnsGetsTheItemAgain) {
    startHosted();
    watcher.reset();
    bus.kill();
    runUntil([] { return false; }, std::chrono::milliseconds(50));
    ASSERT_TRUE(bus.start());
    watcher.emplace(bus.address(), Host::present);
    ASSERT_TRUE(runUntil([&] { return watcher->items().size() == 1 && reader.ready(); }));
    EXPECT_TRUE(runUntil([&] { return text("Id") == "purlock"; }));
    EXPECT_EQ(toolTip(), "Purlock — Idle") << "as it looked before";
}

TEST_F(NotifierItemTest, GoesWithTheItem) {
    startHosted();
    EXPECT_EQ(text("Id"), "purlock");
    dropItem();
    EXPECT_EQ(text("Id"), "(none)");
}

}  // namespace
}  // namespace purlock::test
