#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <string>
#include <vector>

#include "platform/linux/drawing/menu_style.h"
#include "platform/linux/panel/panel_surface.h"
#include "ui/view_parts.h"

namespace purlock {
namespace {

/// A panel with a menu of that many devices, the last of which is the current one.
struct MenuFixture {
    host_linux::PanelSurface surface{{[](const Action&) {}, [] {}}};

    MenuFixture() { surface.setPanel({360, 600}, {}); }

    void show(int devices) {
        std::vector<MenuEntry> entries;
        for (int i = 1; i <= devices; ++i) {
            entries.emplace_back(MenuItem{"Device " + std::to_string(i), PinDevice{}, i == devices});
        }
        View content = column(14, {container(Menu{std::move(entries)}, {line("Desk", {12}, white())})});
        View panel = container(Scroll{}, {std::move(content)});
        panel.frame = Size{360, 600};
        surface.setContent(panel);
        surface.show();
        QApplication::processEvents();
    }

    QMenu& menu() const { return *surface.findChild<QPushButton*>()->menu(); }
};

TEST(DeviceMenu, TheCurrentDeviceAloneIsBold) {
    MenuFixture f;
    f.show(3);
    const auto actions = f.menu().actions();
    ASSERT_EQ(actions.size(), 3);
    EXPECT_FALSE(actions[0]->font().bold());
    EXPECT_FALSE(actions[1]->font().bold());
    EXPECT_TRUE(actions[2]->font().bold());
}

TEST(DeviceMenu, AnOpenOneThatGrowsStaysOnTheScreenWithItsChoice) {
    MenuFixture f;
    f.show(2);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    f.menu().popup(screen.bottomRight());
    ASSERT_TRUE(f.menu().isVisible());
    EXPECT_TRUE(screen.contains(f.menu().geometry()));
    f.menu().setActiveAction(f.menu().actions().at(1));
    const int before = f.menu().height();
    f.show(5);
    ASSERT_TRUE(f.menu().isVisible());
    EXPECT_GT(f.menu().height(), before);
    EXPECT_TRUE(screen.contains(f.menu().geometry()))
        << f.menu().geometry().bottom() << " of " << screen.bottom();
    ASSERT_NE(f.menu().activeAction(), nullptr);
    EXPECT_EQ(f.menu().activeAction()->text(), QStringLiteral("Device 2"));
    f.menu().close();
}

TEST(MenuStyle, IsDarkWithALighterRowUnderThePointer) {
    QMenu menu;
    host_linux::MenuStyle style;
    menu.setStyle(&style);
    QAction* const first = menu.addAction(QStringLiteral("First"));
    QAction* const second = menu.addAction(QStringLiteral("Second"));
    menu.popup({50, 50});
    menu.setActiveAction(second);
    const QImage picture = menu.grab().toImage();
    const auto rowEnd = [&](const QAction* action) {
        const QRect row = menu.actionGeometry(const_cast<QAction*>(action));
        return QColor(picture.pixel(row.right() - 8, row.top() + 3));
    };
    EXPECT_LT(rowEnd(first).lightness(), 70);
    EXPECT_GT(rowEnd(second).lightness(), rowEnd(first).lightness() + 15);
    EXPECT_GT(QColor(picture.pixel(picture.width() / 2, 0)).lightness(), rowEnd(first).lightness())
        << "a faint edge";
    menu.close();
}

}  // namespace
}  // namespace purlock
