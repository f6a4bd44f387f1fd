#include "platform/linux/panel/controls.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <cmath>
#include <utility>

#include "platform/linux/drawing/view_style.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr QSizeF switchSize(26, 15);
constexpr int betweenLabelAndSwitch = 6;
constexpr int widestMenuTitle = 420;
constexpr int smallestTarget = 24;  // points each way that the mouse has to meet
constexpr int aroundFocus = 4;      // between what a small control shows and the outline of the focus

void hold(QWidget& control, QWidget* face) {
    if (control.layout()) return;
    auto* layout = new QHBoxLayout(&control);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(face);
    face->setAttribute(Qt::WA_TransparentForMouseEvents);  // a click on it is a click on the control
    face->show();
}

/// How far a control reaches beyond its drawing on each side: not at all where the drawing is large enough,
/// as that of a card.
QMargins outsetFor(const QSize& shown) {
    if (shown.width() >= smallestTarget && shown.height() >= smallestTarget) return {};
    const auto side = [](int length) { return std::max(aroundFocus, (smallestTarget - length + 1) / 2); };
    const int across = side(shown.width());
    const int down = side(shown.height());
    return {across, down, across, down};
}

void drawFocus(QWidget& control) {
    if (!control.hasFocus()) return;
    QPainter painter(&control);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(qtColor(white(0.55)), 1.5));
    painter.drawRoundedRect(QRectF(control.rect()).adjusted(0.75, 0.75, -0.75, -0.75), 5, 5);
}

/// A control is a little lighter below the pointer, and more so while it is pressed.
void drawGround(QAbstractButton& button) {
    const double opacity = button.isDown() ? 0.16 : button.underMouse() ? 0.08 : 0;
    if (opacity == 0) return;
    QPainter painter(&button);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(qtColor(white(opacity)));
    painter.drawRoundedRect(button.rect(), 6, 6);
}

/// The Return key does what the Space key does, and arrows scroll the panel wherever the focus is.
bool takeKey(QAbstractButton& button, QKeyEvent& event) {
    if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) {
        button.animateClick();
        return true;
    }
    const bool isArrow = event.key() == Qt::Key_Up || event.key() == Qt::Key_Down;
    if (isArrow) event.ignore();
    return isArrow;
}

}  // namespace

PlainButton::PlainButton(const PerformAction& perform, QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);  // a face that wraps may grow
    // A copy: what the action leads to may change this button's own.
    connect(this, &QAbstractButton::clicked, this, [this, &perform] { perform(Action(action_)); });
}

void PlainButton::setFace(QWidget* face) {
    hold(*this, face);
    const QMargins margins = outsetFor(face->sizeHint().expandedTo(face->minimumSize()));
    if (margins != layout()->contentsMargins()) layout()->setContentsMargins(margins);
}

void PlainButton::paintEvent(QPaintEvent* /*event*/) {
    drawGround(*this);
    drawFocus(*this);
}

void PlainButton::keyPressEvent(QKeyEvent* event) {
    if (!takeKey(*this, *event)) QAbstractButton::keyPressEvent(event);
}

PullDownMenu::PullDownMenu(PerformAction perform, QWidget* parent)
    : QPushButton(parent), perform_(std::move(perform)), menu_(this) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    setMenu(&menu_);
    connect(&menu_, &QMenu::aboutToShow, this, [this] { menu_.setMinimumWidth(width()); });
}

void PullDownMenu::setFace(QWidget* face) {
    hold(*this, face);
}

void PullDownMenu::setEntries(const std::vector<MenuEntry>& entries) {
    if (entries == entries_) return;
    entries_ = entries;
    const QAction* chosen = menu_.activeAction();
    const QString chosenTitle = chosen != nullptr ? chosen->text() : QString();
    menu_.clear();
    for (const MenuEntry& entry : entries_) addEntry(entry);
    if (!menu_.isVisible()) return;
    menu_.popup(menu_.pos());  // anew, for a menu that grows must not leave the screen
    for (QAction* action : menu_.actions()) {
        if (!chosenTitle.isEmpty() && action->text() == chosenTitle) menu_.setActiveAction(action);
    }
}

void PullDownMenu::addEntry(const MenuEntry& entry) {
    const auto* item = std::get_if<MenuItem>(&entry);
    if (!item) {
        menu_.addSeparator();
        return;
    }
    QFont shownFont = menu_.font();
    shownFont.setBold(item->isCurrent);
    const QString title =
        QFontMetrics(shownFont).elidedText(lineText(item->title), Qt::ElideMiddle, widestMenuTitle);
    QAction* action = menu_.addAction(withoutMnemonics(title));
    action->setFont(shownFont);
    connect(action, &QAction::triggered, this, [this, wanted = item->action] { perform_(wanted); });
}

void PullDownMenu::paintEvent(QPaintEvent* /*event*/) {
    drawGround(*this);
    drawFocus(*this);
}

void PullDownMenu::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Down) {
        showMenu();
        return;
    }
    QPushButton::keyPressEvent(event);
}

MiniSwitch::MiniSwitch(const PerformAction& perform, QWidget* parent) : QCheckBox(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    connect(this, &QAbstractButton::clicked, this, [this, &perform] { perform(Action(action_)); });
}

void MiniSwitch::show(const Text& label, const Switch& content) {
    action_ = content.action;
    const QString words = lineText(label.text);
    const QFont shownFont = qtFont(label.font);
    if (words != label_ || shownFont != font()) {
        label_ = words;
        setFont(shownFont);
        setText(withoutMnemonics(words));
        setAccessibleName(words);
        updateGeometry();
        update();
    }
    color_ = qtColor(label.color);
    if (content.isOn != isChecked()) setChecked(content.isOn);
}

QSize MiniSwitch::sizeHint() const {
    return shownSize().grownBy(outset());
}

QMargins MiniSwitch::outset() const {
    return outsetFor(shownSize());
}

QSize MiniSwitch::shownSize() const {
    const int height = std::max(fontMetrics().height(), static_cast<int>(switchSize.height()));
    return {fontMetrics().horizontalAdvance(label_) + betweenLabelAndSwitch +
                static_cast<int>(switchSize.width()) + 2,
            height + 2};
}

void MiniSwitch::paintEvent(QPaintEvent* /*event*/) {
    drawGround(*this);
    const QRect shown = rect().marginsRemoved(outset());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color_);
    painter.drawText(shown, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, label_);

    const double left = shown.left() + fontMetrics().horizontalAdvance(label_) + betweenLabelAndSwitch;
    const QRectF track(QPointF(left, shown.top() + (shown.height() - switchSize.height()) / 2), switchSize);
    painter.setPen(Qt::NoPen);
    painter.setBrush(qtColor(isChecked() ? accentGreen : white(0.22)));
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);
    QRectF knob(0, 0, track.height() - 3, track.height() - 3);
    knob.moveCenter(track.center());
    if (isChecked()) {
        knob.moveRight(track.right() - 1.5);
    } else {
        knob.moveLeft(track.left() + 1.5);
    }
    painter.setBrush(qtColor(white()));
    painter.drawEllipse(knob);
    drawFocus(*this);
}

void MiniSwitch::keyPressEvent(QKeyEvent* event) {
    if (!takeKey(*this, *event)) QCheckBox::keyPressEvent(event);
}

}  // namespace purlock::host_linux
