// A text box shown as a window onto the model's TextBuffer: only the lines on screen are
// read and painted, so a console of a million lines costs no more to show than a screenful,
// and appending never touches the view until the next frame.
//
// Thread rules: user-interface thread only. It reads the buffer with the model locked, for
// the length of one screenful.
#pragma once

#include <QAbstractScrollArea>
#include <cstdint>

namespace vcc::ui::qt {

class ConsoleView : public QAbstractScrollArea {
    Q_OBJECT
public:
    ConsoleView(int panel, int control, QWidget *parent = nullptr);

    // Catches up with the buffer: new line count, scroll to the end after an append, repaint.
    // Does nothing when the buffer has not changed since the last call.
    void refresh();
    void setColors(QColor text, QColor back);
    size_t lineCount() const { return lines_; }
    int firstVisibleLine() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    int visibleLines() const;
    void updateScrollRange();

    int panel_, control_;
    uint64_t seenRevision_ = UINT64_MAX;
    size_t lines_ = 0;
    int lineHeight_ = 14;
    int widest_ = 0;
    QColor text_, back_;
};

}  // namespace vcc::ui::qt
