// A string control. Every key typed into it reaches the tool as a key-press event. In its
// key-driven form (a field whose callback builds the text itself, such as the masked password
// entry) the widget inserts nothing: it shows only the text the model holds, so a typed
// character can never appear on screen.
#pragma once

#include <QLineEdit>
#include <functional>

namespace vcc::ui::qt {

class StringField : public QLineEdit {
    Q_OBJECT
public:
    explicit StringField(QWidget *parent = nullptr);
    void setKeyDriven(bool keyDriven);
    bool keyDriven() const { return keyDriven_; }
    // Called for every key press with its tool key code (0 for keys the tool has no code for).
    std::function<void(int keyCode)> onKey;

    // The tool's code for a key event: the character for printable Latin-1 keys, a virtual key code
    // for Enter, Backspace, Delete, Escape, Tab and F1..F12, 0 otherwise.
    static int keyCode(const QKeyEvent &event);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;

private:
    bool keyDriven_ = false;
};

}  // namespace vcc::ui::qt
