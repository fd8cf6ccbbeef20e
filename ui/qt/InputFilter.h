// The way user input leaves the widgets: every event goes into the model's queue (to be
// dispatched, or dropped for a dimmed or hidden control, by the next event processing) and
// ends a front-end wait so that it is handled at once.
#pragma once

#include <QObject>

#include "ui/UiModel.h"

class QWidget;

namespace vcc::ui::qt {

class ControlView;

void postInput(const Event &event);
// The user picked a tab: the model's active sheet follows.
void chooseSheet(int panel, int tabControl, int sheet);

// Right click and double click on any control, including the parts a widget is built of
// (the line edit inside a spin box): right click is the tool's read-back gesture and gets no
// context menu.
class InputFilter : public QObject {
    Q_OBJECT
public:
    InputFilter(ControlView *view, QObject *parent) : QObject(parent), view_(view) {}

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    ControlView *view_;
};

void installInputFilter(QWidget *body, ControlView *view);

}  // namespace vcc::ui::qt
