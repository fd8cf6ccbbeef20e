#include "ui/qt/ConsoleView.h"

#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <climits>

#include "ui/UiModel.h"

namespace vcc::ui::qt {

ConsoleView::ConsoleView(int panel, int control, QWidget *parent)
    : QAbstractScrollArea(parent), panel_(panel), control_(control), text_(Qt::black), back_(Qt::white) {
    // Register echoes line up in columns; Chinese detail lines fall back to the CJK face.
    QFont font = this->font();
    font.setFamilies({QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Noto Sans Mono CJK TC"),
                      QStringLiteral("Noto Sans CJK TC")});
    font.setStyleHint(QFont::Monospace);
    setFont(font);
    lineHeight_ = std::max(1, fontMetrics().lineSpacing());
    setFrameShape(QFrame::StyledPanel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    verticalScrollBar()->setSingleStep(1);
    horizontalScrollBar()->setSingleStep(fontMetrics().averageCharWidth() * 4);
    viewport()->setAutoFillBackground(false);
}

void ConsoleView::setColors(QColor text, QColor back) {
    if (text == text_ && back == back_) return;
    text_ = text;
    back_ = back;
    viewport()->update();
}

int ConsoleView::visibleLines() const { return std::max(1, viewport()->height() / lineHeight_); }

int ConsoleView::firstVisibleLine() const { return verticalScrollBar()->value(); }

void ConsoleView::updateScrollRange() {
    // The scroll bar counts lines, not pixels: a million lines stay within its int range.
    const long long top = std::max<long long>(0, static_cast<long long>(lines_) - visibleLines());
    verticalScrollBar()->setRange(0, static_cast<int>(std::min<long long>(top, INT_MAX)));
    verticalScrollBar()->setPageStep(visibleLines());
    horizontalScrollBar()->setRange(0, std::max(0, widest_ + 8 - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
}

void ConsoleView::refresh() {
    size_t lines = 0;
    uint64_t revision = 0;
    const bool found = Model::instance().locked([&](Model &m) {
        const Control *c = m.control(panel_, control_);
        if (!c) return false;
        lines = c->textBox.lineCount();
        revision = c->textBox.revision();
        return true;
    });
    if (!found || revision == seenRevision_) return;
    // A buffer only grows or is cleared: fewer lines means it was cleared.
    if (lines < lines_) widest_ = 0;
    seenRevision_ = revision;
    lines_ = lines;
    updateScrollRange();
    // New text, even the end of a line begun earlier, scrolls into view as a console should.
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    viewport()->update();
}

void ConsoleView::resizeEvent(QResizeEvent *event) {
    QAbstractScrollArea::resizeEvent(event);
    const bool atEnd = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    updateScrollRange();
    if (atEnd) verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void ConsoleView::paintEvent(QPaintEvent *) {
    const int first = verticalScrollBar()->value();
    const int count = visibleLines() + 1;
    // Copy the screenful out under the lock and draw after releasing it, so a worker that is
    // printing waits only for the copy.
    QStringList shown;
    shown.reserve(count);
    Model::instance().locked([&](Model &m) {
        const Control *c = m.control(panel_, control_);
        if (!c) return 0;
        const size_t total = c->textBox.lineCount();
        for (size_t i = static_cast<size_t>(first); i < total && shown.size() < count; ++i) {
            const std::string_view line = c->textBox.line(i);
            shown.push_back(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
        }
        return 0;
    });

    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), back_);
    painter.setPen(text_);
    painter.setFont(font());
    const QFontMetrics metrics = fontMetrics();
    const int dx = 4 - horizontalScrollBar()->value();
    int y = metrics.ascent() + 1;
    int widest = widest_;
    // Measuring shapes the text a second time: only a line that could be wider than the
    // widest seen so far is measured (a Chinese character takes at most two cells).
    const int cell = metrics.maxWidth();
    for (const QString &line : shown) {
        painter.drawText(dx, y, line);
        if (line.size() * 2 * cell > widest) widest = std::max(widest, metrics.horizontalAdvance(line));
        y += lineHeight_;
    }
    if (widest != widest_) {
        widest_ = widest;
        horizontalScrollBar()->setRange(0, std::max(0, widest_ + 8 - viewport()->width()));
    }
}

}  // namespace vcc::ui::qt
