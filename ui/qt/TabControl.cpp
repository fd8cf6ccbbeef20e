#include "ui/qt/TabControl.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace vcc::ui::qt {
namespace {
QColor rgb(int value) { return QColor((value >> 16) & 0xFF, (value >> 8) & 0xFF, value & 0xFF); }
}  // namespace

TabButton::TabButton(int sheet, QWidget *parent) : QAbstractButton(parent), sheet_(sheet) {
    setFocusPolicy(Qt::TabFocus);
}

void TabButton::setLook(QColor fill, QColor accent, bool active) {
    if (fill == fill_ && accent == accent_ && active == active_) return;
    fill_ = fill;
    accent_ = accent;
    active_ = active;
    update();
}

QSize TabButton::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()) + 18, TabControl::kRowHeight};
}

void TabButton::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF r = QRectF(rect()).adjusted(0.5, active_ ? 0.5 : 2.5, -0.5, 0.5);
    QPainterPath shape;
    shape.moveTo(r.bottomLeft());
    shape.lineTo(r.left(), r.top() + 4);
    shape.quadTo(r.topLeft(), QPointF(r.left() + 4, r.top()));
    shape.lineTo(r.right() - 4, r.top());
    shape.quadTo(r.topRight(), QPointF(r.right(), r.top() + 4));
    shape.lineTo(r.bottomRight());
    painter.fillPath(shape, active_ ? fill_.lighter(115) : fill_.darker(108));
    painter.setPen(QPen(active_ ? accent_ : QColor(90, 90, 90), active_ ? 2 : 1));
    painter.drawPath(shape);
    QFont f = font();
    f.setBold(active_);
    painter.setFont(f);
    painter.setPen(Qt::black);
    painter.drawText(rect().adjusted(4, 1, -4, 0), Qt::AlignCenter, text());
}

TabControl::TabControl(QWidget *parent) : QWidget(parent), stack_(new QStackedWidget(this)) {}

void TabControl::setTabs(const Tabs &tabs) {
    tabs_ = tabs;
    std::vector<int> wanted;
    for (const auto &row : tabs_.rows) wanted.insert(wanted.end(), row.begin(), row.end());
    // Rebuild the buttons only when the set of sheets changed; labels and colours restyle.
    bool same = wanted.size() == buttons_.size();
    for (size_t i = 0; same && i < wanted.size(); ++i) same = buttons_[i]->sheet() == wanted[i];
    if (!same) {
        // Deleted at once: this runs while drawing, never inside a button's own signal.
        for (TabButton *b : buttons_) delete b;
        buttons_.clear();
        for (int sheet : wanted) {
            auto *b = new TabButton(sheet, this);
            connect(b, &QAbstractButton::clicked, this, [this, sheet] {
                setActive(sheet);
                emit sheetChosen(sheet);
            });
            b->show();
            buttons_.push_back(b);
        }
    }
    for (TabButton *b : buttons_) {
        auto label = tabs_.labels.find(b->sheet());
        b->setText(label != tabs_.labels.end() ? label->second : QString::number(b->sheet()));
    }
    layoutTabs();
    restyle();
    update();
}

void TabControl::setActive(int sheet) {
    active_ = sheet;
    auto it = sheets_.find(sheet);
    if (it != sheets_.end() && it->second) stack_->setCurrentWidget(it->second);
    restyle();
}

void TabControl::adoptSheet(int sheet, QWidget *view) {
    auto &held = sheets_[sheet];
    if (held == view) return;
    if (held) stack_->removeWidget(held);
    held = view;
    // The stack shows its current sheet and hides the rest; showing one here would lay every
    // sheet on top of the others.
    stack_->addWidget(view);
    if (sheet == active_) stack_->setCurrentWidget(view);
}

QWidget *TabControl::sheetView(int sheet) const {
    auto it = sheets_.find(sheet);
    return it == sheets_.end() ? nullptr : it->second.data();
}

TabButton *TabControl::tabButton(int sheet) const {
    for (TabButton *b : buttons_)
        if (b->sheet() == sheet) return b;
    return nullptr;
}

void TabControl::restyle() {
    for (TabButton *b : buttons_) {
        auto color = tabs_.colors.find(b->sheet());
        const QColor fill = color != tabs_.colors.end() ? rgb(color->second) : QColor(192, 192, 192);
        b->setLook(fill, rgb(tabs_.accent), b->sheet() == active_);
        if (b->sheet() == active_) b->raise();
    }
    update();
}

void TabControl::layoutTabs() {
    int y = 0;
    size_t index = 0;
    for (const auto &row : tabs_.rows) {
        // A row shares the width among its tabs in proportion to their texts.
        int wanted = 0;
        for (size_t i = 0; i < row.size(); ++i) wanted += buttons_[index + i]->sizeHint().width();
        const double stretch = wanted > 0 && wanted < width() ? 1.0 : (wanted > 0 ? double(width()) / wanted : 1.0);
        int x = 0;
        for (size_t i = 0; i < row.size(); ++i, ++index) {
            TabButton *b = buttons_[index];
            const int w = std::max(24, static_cast<int>(b->sizeHint().width() * stretch));
            b->setGeometry(x, y, w, kRowHeight);
            x += w;
        }
        y += kRowHeight;
    }
    stack_->setGeometry(1, y + 1, std::max(0, width() - 2), std::max(0, height() - y - 2));
}

void TabControl::resizeEvent(QResizeEvent *) { layoutTabs(); }

void TabControl::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const int top = static_cast<int>(tabs_.rows.size()) * kRowHeight;
    painter.setPen(QPen(rgb(tabs_.frame), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRect(0, top, width() - 1, height() - top - 1));
}

}  // namespace vcc::ui::qt
