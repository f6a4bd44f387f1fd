#include "platform/linux/desktop/controls.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <cmath>
#include <utility>

#include "platform/linux/desktop/view_style.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr QSizeF switchSize(26, 15);
constexpr int betweenLabelAndSwitch = 6;
constexpr int widestMenuTitle = 420;

void hold(QWidget& control, QWidget* face) {
    if (control.layout()) return;
    auto* layout = new QHBoxLayout(&control);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(face);
    face->setAttribute(Qt::WA_TransparentForMouseEvents);  // a click on it is a click on the control
    face->show();
}

void drawFocus(QWidget& control) {
    if (!control.hasFocus()) return;
    QPainter painter(&control);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(qtColor(white(0.55)), 1.5));
    painter.drawRoundedRect(QRectF(control.rect()).adjusted(0.75, 0.75, -0.75, -0.75), 4, 4);
}

/// A control that is pressed is a little darker than one that is not.
void drawPressed(QAbstractButton& button) {
    if (!button.isDown()) return;
    QPainter painter(&button);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(qtColor(white(0.08)));
    painter.drawRoundedRect(button.rect(), 4, 4);
}

/// The Return key does what the Space key does.
bool clickOnReturn(QAbstractButton& button, const QKeyEvent& event) {
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter) return false;
    button.animateClick();
    return true;
}

}  // namespace

PlainButton::PlainButton(const PerformAction& perform, QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);  // a face that wraps may grow
    // A copy: what the action leads to may change this button's own.
    connect(this, &QAbstractButton::clicked, this, [this, &perform] { perform(Action(action_)); });
}

void PlainButton::setFace(QWidget* face) {
    hold(*this, face);
}

void PlainButton::paintEvent(QPaintEvent* /*event*/) {
    drawPressed(*this);
    drawFocus(*this);
}

void PlainButton::keyPressEvent(QKeyEvent* event) {
    if (!clickOnReturn(*this, *event)) QAbstractButton::keyPressEvent(event);
}

PullDownMenu::PullDownMenu(PerformAction perform, QWidget* parent)
    : QPushButton(parent), perform_(std::move(perform)), menu_(this) {
    setFocusPolicy(Qt::TabFocus);
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
    menu_.clear();
    for (const MenuEntry& entry : entries_) {
        const auto* item = std::get_if<MenuItem>(&entry);
        if (!item) {
            menu_.addSeparator();
            continue;
        }
        const QString title =
            menu_.fontMetrics().elidedText(lineText(item->title), Qt::ElideMiddle, widestMenuTitle);
        QAction* action = menu_.addAction(withoutMnemonics(title));
        connect(action, &QAction::triggered, this, [this, wanted = item->action] { perform_(wanted); });
    }
}

void PullDownMenu::paintEvent(QPaintEvent* /*event*/) {
    drawPressed(*this);
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
    const int height = std::max(fontMetrics().height(), static_cast<int>(switchSize.height()));
    return {fontMetrics().horizontalAdvance(label_) + betweenLabelAndSwitch +
                static_cast<int>(switchSize.width()) + 2,
            height + 2};
}

void MiniSwitch::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color_);
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, label_);

    const double left = fontMetrics().horizontalAdvance(label_) + betweenLabelAndSwitch;
    const QRectF track(QPointF(left, (height() - switchSize.height()) / 2), switchSize);
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
    if (!clickOnReturn(*this, *event)) QCheckBox::keyPressEvent(event);
}

}  // namespace purlock::host_linux
