#include "ui/qt/Indicators.h"

#include <QPainter>
#include <QRadialGradient>

namespace vcc::ui::qt {

LedWidget::LedWidget(QWidget *parent) : QWidget(parent) {}

void LedWidget::setState(bool on, QColor onColor, QColor offColor) {
    if (on == on_ && onColor == onColor_ && offColor == offColor_) return;
    on_ = on;
    onColor_ = onColor;
    offColor_ = offColor;
    update();
}

void LedWidget::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int side = std::min(width(), height()) - 2;
    const QRectF lamp((width() - side) / 2.0, (height() - side) / 2.0, side, side);
    QColor base = on_ ? onColor_ : offColor_;
    if (!isEnabled()) base = base.darker(130);
    // A highlight towards the upper left makes the lamp read as round at a glance.
    QRadialGradient shine(lamp.center() - QPointF(side / 5.0, side / 5.0), side * 0.7);
    shine.setColorAt(0.0, base.lighter(on_ ? 170 : 130));
    shine.setColorAt(1.0, base);
    painter.setBrush(shine);
    painter.setPen(QPen(QColor(40, 40, 40), 1));
    painter.drawEllipse(lamp);
}

SwitchWidget::SwitchWidget(QWidget *parent) : QAbstractButton(parent) {
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
}

void SwitchWidget::setTexts(const QString &onText, const QString &offText) {
    if (onText == onText_ && offText == offText_) return;
    onText_ = onText;
    offText_ = offText;
    update();
}

void SwitchWidget::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track = QRectF(rect()).adjusted(1, 1, -1, -1);
    const qreal radius = track.height() / 2.0;
    const bool on = isChecked();
    QColor trackColor = on ? QColor(70, 160, 70) : QColor(150, 150, 150);
    if (!isEnabled()) trackColor = on ? QColor(120, 160, 120) : QColor(168, 168, 168);
    painter.setPen(QPen(QColor(80, 80, 80), 1));
    painter.setBrush(trackColor);
    painter.drawRoundedRect(track, radius, radius);

    const qreal thumbSide = track.height() - 4;
    const qreal thumbX = on ? track.right() - thumbSide - 2 : track.left() + 2;
    const QRectF thumb(thumbX, track.top() + 2, thumbSide, thumbSide);
    painter.setBrush(isEnabled() ? QColor(250, 250, 250) : QColor(220, 220, 220));
    painter.drawEllipse(thumb);

    const QString word = on ? (onText_.isEmpty() ? QStringLiteral("ON") : onText_)
                            : (offText_.isEmpty() ? QStringLiteral("OFF") : offText_);
    QRectF textArea = on ? QRectF(track.left() + 4, track.top(), thumb.left() - track.left() - 6, track.height())
                         : QRectF(thumb.right() + 2, track.top(), track.right() - thumb.right() - 6, track.height());
    painter.setPen(isEnabled() ? QColor(Qt::white) : QColor(225, 225, 225));
    QFont small = font();
    small.setBold(true);
    painter.setFont(small);
    painter.drawText(textArea, Qt::AlignCenter, word);
    if (hasFocus()) {
        painter.setPen(QPen(palette().highlight().color(), 1, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(track.adjusted(-0.5, -0.5, 0.5, 0.5), radius, radius);
    }
}

}  // namespace vcc::ui::qt
