#include "ui/qt/ControlViews.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QImage>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <algorithm>
#include <climits>
#include <cmath>

#include "ui/qt/ConsoleView.h"
#include "ui/qt/Indicators.h"
#include "ui/qt/InputFilter.h"
#include "ui/qt/StringField.h"
#include "ui/qt/TabControl.h"

namespace vcc::ui::qt {

QColor toQColor(int rgb) { return QColor((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF); }

bool isKeyDriven(const ControlState &state) {
    // A field whose callback composes its text from every key press (the password entry shows
    // only the asterisks its callback sets).
    return state.style == CTRL_STRING && state.keyDriven;
}

namespace {
constexpr int kLabelHeight = 16;

QString qs(const std::string &text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

int clampInt(double value) {
    if (std::isnan(value)) return 0;
    return static_cast<int>(std::clamp(value, static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
}
}  // namespace

// ---- the common part ----------------------------------------------------------------------------

ControlView::ControlView(int panel, const ControlState &state, QWidget *parent)
    : panel_(panel), id_(state.id), parent_(parent) {}

ControlView::~ControlView() {
    delete label_.data();
    delete body_.data();
}

void ControlView::create(const ControlState &) {
    body_ = makeBody(parent_);
    if (!hasOwnLabel()) {
        label_ = new QLabel(parent_);
        label_->setTextFormat(Qt::PlainText);
        // A dimmed control's caption stays readable on the grey panel, only greyed.
        QPalette palette = label_->palette();
        palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(112, 112, 112));
        label_->setPalette(palette);
    }
    installInputFilter(body_, this);
}

void ControlView::post(int event, int data1, int data2) { postInput({panel_, id_, event, data1, data2}); }

void ControlView::commitNumber(double value) {
    if (applying_) return;
    if (last_.isDouble)
        SetCtrlVal(panel_, id_, value);
    else
        SetCtrlVal(panel_, id_, static_cast<long long>(std::llround(value)));
    post(EVENT_COMMIT);
}

void ControlView::commitText(const QString &text) {
    if (applying_) return;
    SetCtrlVal(panel_, id_, text.toUtf8().constData());
    post(EVENT_COMMIT);
}

void ControlView::placeLabel(const ControlState &state) {
    if (!label_) return;
    // The caption stands to the left of the control, ending just before it; the resource
    // leaves room for it.
    const int width = label_->sizeHint().width();
    label_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label_->setGeometry(state.x - width - 4, state.y + (state.height - kLabelHeight) / 2, width, kLabelHeight);
}

void ControlView::applyColors(QWidget *widget, const ControlState &state, bool fillBackground) {
    QPalette palette = widget->parentWidget() ? widget->parentWidget()->palette() : widget->palette();
    // A dimmed control's own text (a check box's caption) stays readable on the grey panel.
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(112, 112, 112));
    if (state.hasTextColor) {
        const QColor text = toQColor(state.textColor);
        palette.setColor(QPalette::WindowText, text);
        palette.setColor(QPalette::Text, text);
        palette.setColor(QPalette::ButtonText, text);
    }
    if (state.hasBackColor) {
        const QColor back = toQColor(state.backColor);
        palette.setColor(QPalette::Base, back);
        palette.setColor(QPalette::Button, back);
        palette.setColor(QPalette::Window, back);
    }
    widget->setPalette(palette);
    widget->setAutoFillBackground(fillBackground && state.hasBackColor);
}

void ControlView::apply(const ControlState &state) {
    if (!body_) return;
    applying_ = true;
    const bool first = !applied_;
    if (first || !state.sameLook(last_)) {
        body_->setGeometry(state.x, state.y, state.width, state.height);
        body_->setEnabled(!state.dimmed);
        body_->setVisible(state.visible);
        if (label_) {
            label_->setText(qs(state.label));
            label_->setEnabled(!state.dimmed);
            label_->setVisible(state.visible && !state.label.empty());
            placeLabel(state);
        }
        applyLook(state);
    }
    if (first || !state.sameValue(last_) || !state.sameItems(last_) || !state.sameTabs(last_) ||
        !state.sameLook(last_))
        applyValue(state);
    last_ = state;
    applied_ = true;
    applying_ = false;
}

namespace {

// ---- numeric --------------------------------------------------------------------------------------

// Hexadecimal with upper-case digits, as registers are written everywhere else in the tool.
class NumericSpinBox : public QSpinBox {
public:
    using QSpinBox::QSpinBox;

protected:
    QString textFromValue(int value) const override {
        if (displayIntegerBase() != 16) return QSpinBox::textFromValue(value);
        return QString::number(static_cast<unsigned int>(value), 16).toUpper();
    }
};

class NumericView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    QWidget *makeBody(QWidget *parent) override {
        if (isDouble_) {
            auto *box = new QDoubleSpinBox(parent);
            box->setKeyboardTracking(false);
            box->setDecimals(2);
            QObject::connect(box, &QDoubleSpinBox::valueChanged, box, [this](double v) { commitNumber(v); });
            return box;
        }
        auto *box = new NumericSpinBox(parent);
        box->setKeyboardTracking(false);
        QObject::connect(box, &QSpinBox::valueChanged, box, [this](int v) { commitNumber(v); });
        return box;
    }
    void applyLook(const ControlState &s) override {
        applyColors(body_, s, false);
        // A narrow field gives its width to the digits; the wheel and the arrow keys still step.
        static_cast<QAbstractSpinBox *>(body_.data())
            ->setButtonSymbols(s.width < 56 ? QAbstractSpinBox::NoButtons : QAbstractSpinBox::UpDownArrows);
        if (auto *box = qobject_cast<QSpinBox *>(body_.data())) {
            box->setRange(clampInt(s.minValue), clampInt(std::max(s.minValue, s.maxValue)));
            box->setDisplayIntegerBase(s.format == VAL_HEX_FORMAT ? 16 : 10);
            box->setPrefix(s.format == VAL_HEX_FORMAT ? QStringLiteral("0x") : QString());
        } else if (auto *dbox = qobject_cast<QDoubleSpinBox *>(body_.data())) {
            dbox->setRange(s.minValue, std::max(s.minValue, s.maxValue));
        }
    }
    void applyValue(const ControlState &s) override {
        if (auto *box = qobject_cast<QSpinBox *>(body_.data()))
            box->setValue(static_cast<int>(std::clamp<long long>(s.intValue, INT_MIN, INT_MAX)));
        else if (auto *dbox = qobject_cast<QDoubleSpinBox *>(body_.data()))
            dbox->setValue(s.doubleValue);
    }

public:
    bool isDouble_ = false;
};

// ---- ring -----------------------------------------------------------------------------------------

class RingView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    QWidget *makeBody(QWidget *parent) override {
        auto *box = new QComboBox(parent);
        box->setMaxVisibleItems(20);
        QObject::connect(box, &QComboBox::activated, box, [this, box](int index) {
            if (index >= 0) commitNumber(box->itemData(index).toInt());
        });
        return box;
    }
    void applyLook(const ControlState &s) override { applyColors(body_, s, false); }
    void applyValue(const ControlState &s) override {
        auto *box = static_cast<QComboBox *>(body_.data());
        if (!applied_ || !s.sameItems(last_)) {
            box->clear();
            for (const auto &item : s.items) box->addItem(qs(item.label), item.value);
        }
        box->setCurrentIndex(s.ringIndex < box->count() ? s.ringIndex : -1);
    }
};

// ---- string ---------------------------------------------------------------------------------------

class StringView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    QWidget *makeBody(QWidget *parent) override {
        auto *field = new StringField(parent);
        field->onKey = [this](int code) { post(EVENT_KEYPRESS, code, 0); };
        QObject::connect(field, &QLineEdit::editingFinished, field, [this, field] {
            if (field->keyDriven() || !field->isModified()) return;
            field->setModified(false);
            commitText(field->text());
        });
        return field;
    }
    void applyLook(const ControlState &s) override {
        auto *field = static_cast<StringField *>(body_.data());
        applyColors(field, s, false);
        field->setKeyDriven(isKeyDriven(s));
        field->setAcceptDrops(!field->keyDriven());
        field->setMaxLength(field->keyDriven() ? 32767 : std::max(1, s.maxLength));
    }
    void applyValue(const ControlState &s) override {
        auto *field = static_cast<StringField *>(body_.data());
        const QString text = qs(s.text);
        if (field->text() != text) {
            field->setText(text);
            // Show a long value from its beginning, unless the user is at work in it.
            if (!field->hasFocus()) field->setCursorPosition(0);
        }
        field->setModified(false);
    }
};

// ---- text box (the console) -------------------------------------------------------------------------

class TextBoxView : public ControlView {
public:
    using ControlView::ControlView;
    void refresh() override {
        if (auto *view = static_cast<ConsoleView *>(body_.data())) view->refresh();
    }

protected:
    QWidget *makeBody(QWidget *parent) override { return new ConsoleView(panel_, id_, parent); }
    void applyLook(const ControlState &s) override {
        static_cast<ConsoleView *>(body_.data())
            ->setColors(s.hasTextColor ? toQColor(s.textColor) : QColor(Qt::black),
                        s.hasBackColor ? toQColor(s.backColor) : QColor(Qt::white));
    }
    void applyValue(const ControlState &) override { refresh(); }
};

// ---- LED, switch, check box ---------------------------------------------------------------------------

class LedView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    QWidget *makeBody(QWidget *parent) override { return new LedWidget(parent); }
    void applyValue(const ControlState &s) override {
        static_cast<LedWidget *>(body_.data())->setState(s.intValue != 0, toQColor(s.onColor), toQColor(s.offColor));
    }
};

class SwitchView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    QWidget *makeBody(QWidget *parent) override {
        auto *sw = new SwitchWidget(parent);
        QObject::connect(sw, &QAbstractButton::clicked, sw, [this](bool on) { commitNumber(on ? 1 : 0); });
        return sw;
    }
    void applyLook(const ControlState &s) override {
        static_cast<SwitchWidget *>(body_.data())->setTexts(qs(s.onText), qs(s.offText));
    }
    void applyValue(const ControlState &s) override { static_cast<SwitchWidget *>(body_.data())->setChecked(s.intValue != 0); }
};

class CheckBoxView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    bool hasOwnLabel() const override { return true; }
    QWidget *makeBody(QWidget *parent) override {
        auto *box = new QCheckBox(parent);
        QObject::connect(box, &QAbstractButton::clicked, box, [this](bool on) { commitNumber(on ? 1 : 0); });
        return box;
    }
    void applyLook(const ControlState &s) override {
        auto *box = static_cast<QCheckBox *>(body_.data());
        box->setText(qs(s.label));
        applyColors(box, s, true);
    }
    void applyValue(const ControlState &s) override { static_cast<QCheckBox *>(body_.data())->setChecked(s.intValue != 0); }
};

// ---- command button -------------------------------------------------------------------------------------

class ButtonView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    bool hasOwnLabel() const override { return true; }
    QWidget *makeBody(QWidget *parent) override {
        auto *button = new QPushButton(parent);
        button->setAutoDefault(false);
        // Jog buttons move while held: they act on the press (1) and again on the release (0).
        QObject::connect(button, &QPushButton::pressed, button, [this] { post(EVENT_LEFT_CLICK, 1, 0); });
        QObject::connect(button, &QPushButton::clicked, button, [this] { post(EVENT_COMMIT, 0, 0); });
        return button;
    }
    void applyLook(const ControlState &s) override {
        auto *button = static_cast<QPushButton *>(body_.data());
        button->setText(qs(s.label));
        applyColors(button, s, false);
    }
    void applyValue(const ControlState &) override {}
};

// ---- canvas and the tab control made from one --------------------------------------------------------------

// A canvas paints the picture the tool drew last, scaled to its size; the image is shared with
// the model and never changes, so painting needs no copy and no lock.
class CanvasWidget : public QFrame {
public:
    using QFrame::QFrame;
    void setImage(std::shared_ptr<const CanvasImage> image) {
        image_ = std::move(image);
        update();
    }

protected:
    void paintEvent(QPaintEvent *event) override {
        QFrame::paintEvent(event);
        if (!image_ || image_->width <= 0 || image_->height <= 0) return;
        const QImage picture(image_->rgb.data(), image_->width, image_->height, image_->width * 3,
                             QImage::Format_RGB888);
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(rect(), picture);
    }

private:
    std::shared_ptr<const CanvasImage> image_;
};

class CanvasView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    bool hasOwnLabel() const override { return true; }
    QWidget *makeBody(QWidget *parent) override {
        auto *frame = new CanvasWidget(parent);
        frame->setFrameShape(QFrame::NoFrame);
        return frame;
    }
    void applyLook(const ControlState &s) override { applyColors(body_, s, true); }
    void applyValue(const ControlState &s) override { static_cast<CanvasWidget *>(body_.data())->setImage(s.image); }
};

class TabView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    bool hasOwnLabel() const override { return true; }
    QWidget *makeBody(QWidget *parent) override {
        auto *tabs = new TabControl(parent);
        QObject::connect(tabs, &TabControl::sheetChosen, tabs, [this](int sheet) { chooseSheet(panel_, id_, sheet); });
        return tabs;
    }
    void applyValue(const ControlState &s) override {
        auto *tabs = static_cast<TabControl *>(body_.data());
        TabControl::Tabs t;
        t.rows = s.tabRows;
        for (const auto &[sheet, label] : s.tabLabels) t.labels[sheet] = qs(label);
        t.colors = s.tabColors;
        t.accent = s.onColor;
        t.frame = s.offColor;
        tabs->setTabs(t);
        tabs->setActive(s.activeSheet);
    }
};

// ---- label, progress, frame ---------------------------------------------------------------------------

class LabelView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    bool hasOwnLabel() const override { return true; }
    QWidget *makeBody(QWidget *parent) override {
        auto *label = new QLabel(parent);
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        return label;
    }
    void applyLook(const ControlState &s) override {
        auto *label = static_cast<QLabel *>(body_.data());
        applyColors(label, s, true);
        label->setWordWrap(s.height >= 2 * label->fontMetrics().lineSpacing());
    }
    void applyValue(const ControlState &s) override {
        static_cast<QLabel *>(body_.data())->setText(qs(s.text.empty() ? s.label : s.text));
    }
};

class ProgressView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    QWidget *makeBody(QWidget *parent) override {
        auto *bar = new QProgressBar(parent);
        bar->setTextVisible(true);
        return bar;
    }
    void applyLook(const ControlState &s) override {
        auto *bar = static_cast<QProgressBar *>(body_.data());
        bar->setRange(clampInt(s.minValue), clampInt(std::max(s.minValue, s.maxValue)));
    }
    void applyValue(const ControlState &s) override {
        auto *bar = static_cast<QProgressBar *>(body_.data());
        const double value = s.isDouble ? s.doubleValue : static_cast<double>(s.intValue);
        bar->setValue(std::clamp(clampInt(value), bar->minimum(), bar->maximum()));
    }
};

class FrameView : public ControlView {
public:
    using ControlView::ControlView;

protected:
    bool hasOwnLabel() const override { return true; }
    QWidget *makeBody(QWidget *parent) override {
        auto *box = new QGroupBox(parent);
        // Drawn behind the controls it encloses, and never in the way of their clicks.
        box->setAttribute(Qt::WA_TransparentForMouseEvents);
        return box;
    }
    void applyLook(const ControlState &s) override { applyColors(body_, s, false); }
    void applyValue(const ControlState &s) override {
        static_cast<QGroupBox *>(body_.data())->setTitle(qs(s.label.empty() ? s.text : s.label));
    }
};

}  // namespace

std::unique_ptr<ControlView> createControlView(int panel, const ControlState &state, QWidget *parent) {
    std::unique_ptr<ControlView> view;
    switch (state.style) {
    case CTRL_NUMERIC: {
        auto numeric = std::make_unique<NumericView>(panel, state, parent);
        numeric->isDouble_ = state.isDouble;
        view = std::move(numeric);
        break;
    }
    case CTRL_RING: view = std::make_unique<RingView>(panel, state, parent); break;
    case CTRL_STRING: view = std::make_unique<StringView>(panel, state, parent); break;
    case CTRL_TEXT_BOX: view = std::make_unique<TextBoxView>(panel, state, parent); break;
    case CTRL_LED: view = std::make_unique<LedView>(panel, state, parent); break;
    case CTRL_SWITCH: view = std::make_unique<SwitchView>(panel, state, parent); break;
    case CTRL_CHECK_BOX: view = std::make_unique<CheckBoxView>(panel, state, parent); break;
    case CTRL_COMMAND_BUTTON: view = std::make_unique<ButtonView>(panel, state, parent); break;
    case CTRL_CANVAS: view = std::make_unique<CanvasView>(panel, state, parent); break;
    case CTRL_TAB: view = std::make_unique<TabView>(panel, state, parent); break;
    case CTRL_TEXT_MSG: view = std::make_unique<LabelView>(panel, state, parent); break;
    case CTRL_PROGRESS: view = std::make_unique<ProgressView>(panel, state, parent); break;
    case CTRL_FRAME: view = std::make_unique<FrameView>(panel, state, parent); break;
    default: return nullptr;  // timers and anything without a face
    }
    view->create(state);
    return view;
}

}  // namespace vcc::ui::qt
