#include "platform/linux/tray/tray_status_item.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <utility>

#include "platform/linux/desktop/panel_placement.h"
#include "platform/linux/tray/status_icon.h"

namespace purlock::host_linux {

namespace {

// A bus that is slow to answer must not keep the icon from the other tray.
constexpr std::chrono::milliseconds longestWaitForBus{300};
constexpr double clickSize = 24;

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

TrayStatusItem::TrayStatusItem(RunLoop& mainLoop, BusThread& busThread, const std::string& busAddress)
    : mainLoop_(mainLoop),
      dock_({[this] { click(); },
             [this](int pixels, const std::optional<QColor>& foreground) {
                 return statusIcon(image_, pixels, foreground, scheme_);
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
    NotifierLook look{statusPixmaps(image_, scheme_), image_.accessibilityDescription, toolTip_};
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

/// Below the icon, if it was ever clicked; the menu is beside it.
void TrayStatusItem::openChosen() {
    if (lastClick_ == Rect{}) lastClick_ = onScreen(clickArea(QCursor::pos().x(), QCursor::pos().y()));
    click();
}

void TrayStatusItem::click() {
    const auto onClick = onClick_;  // outlives an action that sets another
    if (onClick) onClick();
}

std::function<std::optional<Rect>()> TrayStatusItem::whereabouts() const {
    return [weak = weakLink_]() -> std::optional<Rect> {
        const auto link = weak.lock();
        return link ? std::optional(link->item->windowFrame()) : std::nullopt;
    };
}

Rect TrayStatusItem::windowFrame() const {
    if (hosted_) return lastClick_;
    const auto pixels = dock_.frame();
    const auto points = pixels ? pointsOfPixels(*pixels, screenAreas()) : std::nullopt;
    return points ? onScreen(*points) : Rect{};
}

}  // namespace purlock::host_linux
