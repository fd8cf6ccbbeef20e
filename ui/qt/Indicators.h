// The two painted controls Qt has no widget for: the round LED lamp and the toggle switch.
#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QWidget>

namespace vcc::ui::qt {

// A round lamp in its on or off colour. It takes no input of its own; clicks on it reach the
// tool as events through the panel's input filter.
class LedWidget : public QWidget {
    Q_OBJECT
public:
    explicit LedWidget(QWidget *parent = nullptr);
    void setState(bool on, QColor onColor, QColor offColor);
    bool isOn() const { return on_; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool on_ = false;
    QColor onColor_{Qt::green}, offColor_{Qt::darkGray};
};

// A two-position switch: a track with a thumb at the "on" or "off" end and the word for the
// current position. Checkable; the user flips it with a click or the space bar.
class SwitchWidget : public QAbstractButton {
    Q_OBJECT
public:
    explicit SwitchWidget(QWidget *parent = nullptr);
    void setTexts(const QString &onText, const QString &offText);
    QSize sizeHint() const override { return {60, 22}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString onText_, offText_;
};

}  // namespace vcc::ui::qt
