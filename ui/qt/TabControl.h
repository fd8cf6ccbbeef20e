// The engineering window's tab control: rows of coloured tabs over the area that shows the
// active sheet. Sheets are panels of their own (their views belong to the front-end); the
// tab control only holds them while they are its sheets.
#pragma once

#include <QAbstractButton>
#include <QPointer>
#include <QStackedWidget>
#include <QWidget>
#include <map>
#include <vector>

namespace vcc::ui::qt {

class TabButton : public QAbstractButton {
    Q_OBJECT
public:
    TabButton(int sheet, QWidget *parent);
    int sheet() const { return sheet_; }
    void setLook(QColor fill, QColor accent, bool active);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int sheet_;
    QColor fill_, accent_;
    bool active_ = false;
};

class TabControl : public QWidget {
    Q_OBJECT
public:
    explicit TabControl(QWidget *parent = nullptr);

    struct Tabs {
        std::vector<std::vector<int>> rows;  // sheet panel handles
        std::map<int, QString> labels;
        std::map<int, int> colors;           // 0xRRGGBB
        int accent = 0x8000FF, frame = 0x000000;
    };
    void setTabs(const Tabs &tabs);
    void setActive(int sheet);
    int active() const { return active_; }
    // Puts a sheet's view into the area; it stays until another view is given for that sheet.
    void adoptSheet(int sheet, QWidget *view);
    QWidget *sheetView(int sheet) const;
    TabButton *tabButton(int sheet) const;
    static constexpr int kRowHeight = 22;

signals:
    void sheetChosen(int sheet);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void layoutTabs();
    void restyle();

    Tabs tabs_;
    int active_ = 0;
    std::vector<TabButton *> buttons_;
    QStackedWidget *stack_;
    std::map<int, QPointer<QWidget>> sheets_;
};

}  // namespace vcc::ui::qt
