#include "platform/linux/drawing/menu_style.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QStyleOptionMenuItem>
#include <QToolTip>
#include <algorithm>

#include "platform/linux/drawing/view_style.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr int aroundEntries = 5;
constexpr int besideText = 10;
constexpr int entryHeight = 26;
constexpr int separatorHeight = 9;
constexpr double entryRadius = 5;

void drawEntry(const QStyleOptionMenuItem& entry, QPainter& painter) {
    if (entry.menuItemType == QStyleOptionMenuItem::Separator) {
        const QRect line(entry.rect.left() + besideText, entry.rect.center().y(),
                         entry.rect.width() - 2 * besideText, 1);
        painter.fillRect(line, qtColor(white(0.15)));
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    if (entry.state.testFlag(QStyle::State_Selected)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(qtColor(white(0.14)));
        painter.drawRoundedRect(entry.rect, entryRadius, entryRadius);
    }
    painter.setPen(qtColor(white()));
    painter.setFont(entry.font);
    painter.drawText(entry.rect.adjusted(besideText, 0, -besideText, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic,
                     entry.text);
}

void drawEdge(const QRect& rect, QPainter& painter) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(qtColor(white(0.16)));
    painter.drawRect(QRect(rect.left(), rect.top(), rect.width(), 1));
    painter.drawRect(QRect(rect.left(), rect.bottom(), rect.width(), 1));
    painter.drawRect(QRect(rect.left(), rect.top() + 1, 1, rect.height() - 2));
    painter.drawRect(QRect(rect.right(), rect.top() + 1, 1, rect.height() - 2));
}

constexpr Color menuGround{0.17, 0.17, 0.18, 1};

// As the panel's own texts are.
constexpr int tipSize = 11;
constexpr int menuSize = 12;

QPalette darkPalette() {
    QPalette palette;
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button, QPalette::ToolTipBase}) {
        palette.setColor(role, qtColor(menuGround));
    }
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::HighlightedText}) {
        palette.setColor(role, qtColor(white(0.92)));
    }
    palette.setColor(QPalette::Highlight, qtColor({0.2, 0.45, 0.85, 1}));
    return palette;
}

}  // namespace

MenuStyle::MenuStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void MenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
    const auto* entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element != CE_MenuItem || entry == nullptr) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    painter->save();
    drawEntry(*entry, *painter);
    painter->restore();
}

void MenuStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    const bool isGround = element == PE_PanelMenu || element == PE_PanelTipLabel;
    if (!isGround && element != PE_FrameMenu) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    painter->save();
    if (isGround) painter->fillRect(option->rect, option->palette.window());
    if (element != PE_PanelMenu) drawEdge(option->rect, *painter);  // a menu's frame comes by itself
    painter->restore();
}

QSize MenuStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                  const QWidget* widget) const {
    const auto* entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (type != CT_MenuItem || entry == nullptr) {
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    }
    if (entry->menuItemType == QStyleOptionMenuItem::Separator) return {size.width(), separatorHeight};
    const QFontMetrics metrics(entry->font);
    return {metrics.horizontalAdvance(entry->text) + 2 * besideText + 2,
            std::max(entryHeight, metrics.height())};
}

int MenuStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    if (metric == PM_MenuHMargin || metric == PM_MenuVMargin) return aroundEntries - 1;
    if (metric == PM_MenuPanelWidth) return 1;
    return QProxyStyle::pixelMetric(metric, option, widget);
}

void applyDarkLook() {
    QApplication::setStyle(new MenuStyle);  // which the application then owns
    const QPalette palette = darkPalette();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
    QFont small = QApplication::font();
    small.setPixelSize(tipSize);
    QToolTip::setFont(small);
    small.setPixelSize(menuSize);
    QApplication::setFont(small, "QMenu");
}

}  // namespace purlock::host_linux
