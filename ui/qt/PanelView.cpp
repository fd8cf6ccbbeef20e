#include "ui/qt/PanelView.h"

#include <QCloseEvent>

#include "ui/qt/InputFilter.h"

namespace vcc::ui::qt {

PanelView::PanelView(int handle) : QWidget(nullptr, Qt::Window), handle_(handle) {
    setAttribute(Qt::WA_QuitOnClose, false);
    setAutoFillBackground(true);
}

PanelView::~PanelView() { controls_.clear(); }

ControlView *PanelView::controlView(int id) const {
    auto it = controls_.find(id);
    return it == controls_.end() ? nullptr : it->second.get();
}

void PanelView::apply(PanelState state) {
    const bool first = !applied_;
    if (first || state.title != last_.title) setWindowTitle(QString::fromStdString(state.title));
    if (first || state.width != last_.width || state.height != last_.height)
        setFixedSize(std::max(1, state.width), std::max(1, state.height));
    if (first || state.backColor != last_.backColor) {
        QPalette p = palette();
        p.setColor(QPalette::Window, toQColor(state.backColor));
        setPalette(p);
    }
    if (isWindow() && (first || state.top != last_.top || state.left != last_.left)) move(state.left, state.top);

    if (state.hasControls) {
        for (const ControlState &c : state.controls) {
            auto &view = controls_[c.id];
            // A canvas turned into a tab control becomes another kind of widget.
            if (view && view->style() != c.style) view.reset();
            if (!view) {
                view = createControlView(handle_, c, this);
                if (!view) {
                    controls_.erase(c.id);
                    continue;
                }
                if (c.style == CTRL_FRAME) {
                    // Behind everything created before it, and everything after it stacks above.
                    view->body()->lower();
                }
            }
            view->apply(c);
        }
        if (state.activeControl != focused_) {
            focused_ = state.activeControl;
            if (ControlView *view = controlView(focused_); view && view->body()) view->body()->setFocus();
        }
    }
    state.controls.clear();
    last_ = std::move(state);
    applied_ = true;
}

void PanelView::refreshContent() {
    for (auto &[id, view] : controls_) view->refresh();
}

void PanelView::closeEvent(QCloseEvent *event) {
    // Whether a panel closes is the tool's decision (its panel callback); the window stays.
    event->ignore();
    postInput({handle_, 0, EVENT_CLOSE, 0, 0});
}

}  // namespace vcc::ui::qt
