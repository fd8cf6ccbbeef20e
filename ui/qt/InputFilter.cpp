#include "ui/qt/InputFilter.h"

#include <QMouseEvent>
#include <QWidget>

#include "ui/qt/ControlViews.h"

namespace vcc::ui::qt {

bool InputFilter::eventFilter(QObject *watched, QEvent *event) {
    // Filters see events before a disabled widget refuses them; a dimmed control gets nothing.
    if (auto *widget = qobject_cast<QWidget *>(watched); widget && !widget->isEnabled())
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() != Qt::RightButton) break;
        const QPoint at = mouse->position().toPoint();
        view_->post(EVENT_RIGHT_CLICK, at.y(), at.x());
        return true;
    }
    case QEvent::MouseButtonDblClick: {
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() != Qt::LeftButton) break;
        const QPoint at = mouse->position().toPoint();
        view_->post(EVENT_LEFT_DOUBLE_CLICK, at.y(), at.x());
        break;
    }
    case QEvent::ContextMenu: return true;
    default: break;
    }
    return QObject::eventFilter(watched, event);
}

void installInputFilter(QWidget *body, ControlView *view) {
    auto *filter = new InputFilter(view, body);
    body->installEventFilter(filter);
    for (QWidget *part : body->findChildren<QWidget *>()) part->installEventFilter(filter);
}

}  // namespace vcc::ui::qt
