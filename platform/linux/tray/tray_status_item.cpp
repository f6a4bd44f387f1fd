#include "platform/linux/tray/tray_status_item.h"

#include <QApplication>
#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <cmath>
#include <utility>

#include "platform/linux/drawing/panel_placement.h"
#include "platform/linux/tray/status_icon.h"

namespace purlock::host_linux {

namespace {

// A bus that is slow to answer must not keep the icon from the other tray.
constexpr std::chrono::milliseconds longestWaitForBus{300};
constexpr double clickSize = 24;
constexpr double nearby = 48;  // of a click on an icon: on the same icon, however large

std::vector<ScreenArea> screenAreas() {
    std::vector<ScreenArea> areas;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect points = screen->geometry();
        areas.push_back({{static_cast<double>(points.x()), static_cast<double>(points.y()),
                          static_cast<double>(points.width()), static_cast<double>(points.height())},
                         screen->devicePixelRatio()});
    }
    return areas;
}

/// In the shell's coordinates.
Rect onScreen(const Rect& points) {
    const QScreen* first = QGuiApplication::primaryScreen();
    return first != nullptr ? flipped(points, first->geometry().height()) : Rect{};
}

Rect clickArea(double x, double y) {
    return {x - clickSize / 2, y - clickSize / 2, clickSize, clickSize};
}

}  // namespace

TrayStatusItem::TrayStatusItem(RunLoop& mainLoop, BusThread& busThread, const std::string& busAddress,
                               TrayStatusBar::PresentPanel presentPanel)
    : mainLoop_(mainLoop),
      presentPanel_(std::move(presentPanel)),
      dock_({[this] { click(); }, [this] { showMenu(QCursor::pos()); },
             [this](int pixels, const TrayColors& colors) {
                 const ColorScheme scheme = colors.background ? schemeOf(*colors.background) : scheme_;
                 return statusIcon(image_, pixels, colors.foreground, scheme);
             }}),
      bus_(busThread, [&busThread, busAddress, events = busEvents()] {
          return std::make_unique<TrayBus>(busThread, busAddress, events);
      }) {
    link_->item = this;
    dockDelay_ = mainLoop_.postDelayed(longestWaitForBus, [this] { dock_.setShown(!hosted_); });
}

/// On the bus thread; each hands its news over to the main thread.
TrayBusEvents TrayStatusItem::busEvents() {
    const auto tell = [&loop = mainLoop_, weak = weakLink_](auto work) {
        loop.post([weak, work = std::move(work)] {
            if (const auto link = weak.lock()) work(*link->item);
        });
    };
    const auto tellClick = [tell, weak = weakLink_](auto work) {
        const auto link = weak.lock();
        if (!link || link->clickUnderWay.exchange(true)) return;
        tell([work](TrayStatusItem& item) {
            item.link_->clickUnderWay = false;
            work(item);
        });
    };
    return {.item = {
                .hosted =
                    [tell](bool hosted) { tell([hosted](TrayStatusItem& item) { item.setHosted(hosted); }); },
                .activated =
                    [tellClick](std::int32_t x, std::int32_t y) {
                        tellClick([x, y](TrayStatusItem& item) { item.activated(x, y); });
                    },
                .menuWanted =
                    [tellClick](std::int32_t x, std::int32_t y) {
                        tellClick([x, y](TrayStatusItem& item) { item.menuWanted(x, y); });
                    },
                .openChosen = [tellClick] { tellClick([](TrayStatusItem& item) { item.openChosen(); }); },
                .quitChosen =
                    [tell, weak = weakLink_] {
                        const auto link = weak.lock();
                        if (!link || link->quitUnderWay.exchange(true)) return;
                        tell([](TrayStatusItem&) { QCoreApplication::quit(); });
                    }},
            .onScheme = [tell](ColorScheme scheme) {
                tell([scheme](TrayStatusItem& item) { item.setScheme(scheme); });
            }};
}

void TrayStatusItem::setImage(const SymbolImage& image) {
    if (image == image_) return;
    image_ = image;
    publishLook();
    dock_.update();
}

void TrayStatusItem::setAction(std::function<void()> onClick) {
    onClick_ = std::move(onClick);
}

void TrayStatusItem::setToolTip(const std::string& text) {
    if (text == toolTip_) return;
    toolTip_ = text;
    publishLook();
    dock_.setToolTip(text);
}

void TrayStatusItem::publishLook() {
    NotifierLook look{statusPixmaps(image_, scheme_), statusIconName(image_), image_.accessibilityDescription,
                      toolTip_};
    bus_.post([look = std::move(look)](TrayBus& bus) { bus.setLook(look); });
}

void TrayStatusItem::setHosted(bool hosted) {
    hosted_ = hosted;
    dockDelay_.cancel();
    dock_.setShown(!hosted);
}

void TrayStatusItem::setScheme(ColorScheme scheme) {
    scheme_ = scheme;
    publishLook();
    dock_.update();
}

/// Trays that do not know the place pass 0, 0; others pass it in pixels. Off every screen, and where nothing
/// is known, the pointer is where the user has clicked.
void TrayStatusItem::activated(std::int32_t x, std::int32_t y) {
    auto area = pointsOfPixels(clickArea(x, y), screenAreas());
    if (!area || (x == 0 && y == 0)) area = clickArea(QCursor::pos().x(), QCursor::pos().y());
    lastClick_ = onScreen(*area);
    click();
}

void TrayStatusItem::menuWanted(std::int32_t x, std::int32_t y) {
    // No program can put a menu at a place of the Wayland screen where it has no window.
    if (QGuiApplication::platformName() == QLatin1StringView("wayland")) return activated(x, y);
    const auto area = pointsOfPixels(clickArea(x, y), screenAreas());
    const bool told = area && (x != 0 || y != 0);
    showMenu(told ? QRectF(area->x, area->y, area->width, area->height).center().toPoint() : QCursor::pos());
}

/// The menu of trays that do not show one themselves.
void TrayStatusItem::showMenu(QPoint place) {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) return;
    if (!menu_) {
        menu_ = std::make_unique<QMenu>();
        menu_->addAction(QString::fromUtf8(openLabel), [this] { openChosen(); });
        menu_->addAction(QString::fromUtf8(quitLabel), [] { QCoreApplication::quit(); });
    }
    menu_->popup(place);
}

/// Below the icon, if it was ever clicked; the menu is beside it. A panel that is open stays so.
void TrayStatusItem::openChosen() {
    if (presentPanel_ && presentPanel_()) return;
    if (lastClick_ == Rect{}) lastClick_ = onScreen(clickArea(QCursor::pos().x(), QCursor::pos().y()));
    click();
}

void TrayStatusItem::click() {
    const auto onClick = onClick_;  // outlives an action that sets another
    if (onClick) onClick();
}

IconWhereabouts TrayStatusItem::whereabouts() const {
    return {.frame = [weak = weakLink_]() -> std::optional<Rect> {
                const auto link = weak.lock();
                return link ? std::optional(link->item->windowFrame()) : std::nullopt;
            },
            .iconAt =
                [weak = weakLink_](double x, double y) {
                    const auto link = weak.lock();
                    return link ? link->item->iconAt(x, y) : IconAt::no;
                }};
}

/// A notifier item's icon is near the last click, or anywhere on a bar.
IconAt TrayStatusItem::iconAt(double x, double y) const {
    const auto contains = [x, y](const Rect& area) {
        return x >= area.x && y >= area.y && x < area.x + area.width && y < area.y + area.height;
    };
    if (!hosted_) {
        const auto icon = dock_.frame();
        return icon && contains(*icon) ? IconAt::yes : IconAt::no;
    }
    const auto place = pointsOfPixels({x, y, 0, 0}, screenAreas());
    if (!place) return IconAt::no;
    const QPoint point(static_cast<int>(place->x), static_cast<int>(place->y));
    const QScreen* screen = QGuiApplication::screenAt(point);
    const bool onBar = screen != nullptr && !screen->availableGeometry().contains(point);
    const Rect last = onScreen(lastClick_);
    const bool nearLast = std::abs(place->x - last.x - last.width / 2) <= nearby &&
                          std::abs(place->y - last.y - last.height / 2) <= nearby;
    return onBar || (lastClick_ != Rect{} && nearLast) ? IconAt::maybe : IconAt::no;
}

Rect TrayStatusItem::windowFrame() const {
    if (hosted_) return lastClick_;
    const auto pixels = dock_.frame();
    const auto points = pixels ? pointsOfPixels(*pixels, screenAreas()) : std::nullopt;
    return points ? onScreen(*points) : Rect{};
}

}  // namespace purlock::host_linux
