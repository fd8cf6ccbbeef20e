#include "ui/qt/StringField.h"

#include <QKeyEvent>

#include "ui/UserInterface.h"

namespace vcc::ui::qt {

StringField::StringField(QWidget *parent) : QLineEdit(parent) {}

void StringField::setKeyDriven(bool keyDriven) {
    keyDriven_ = keyDriven;
    // No input method either: composed text would bypass keyPressEvent.
    setAttribute(Qt::WA_InputMethodEnabled, !keyDriven);
}

int StringField::keyCode(const QKeyEvent &event) {
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter: return VAL_ENTER_VKEY;
    case Qt::Key_Backspace: return VAL_BACKSPACE_VKEY;
    case Qt::Key_Delete: return VAL_FWD_DELETE_VKEY;
    case Qt::Key_Escape: return VAL_ESC_VKEY;
    case Qt::Key_Tab: return VAL_TAB_VKEY;
    default: break;
    }
    if (event.key() >= Qt::Key_F1 && event.key() <= Qt::Key_F12) return VAL_F1_VKEY + (event.key() - Qt::Key_F1);
    // Character codes are one byte: a letter past Latin-1 has none, or its code point would
    // read as one of the virtual keys above (U+0200 as Backspace, U+0D00 as Enter).
    const QString text = event.text();
    if (text.size() == 1 && text[0].isPrint() && text[0].unicode() < 0x100) return text[0].unicode();
    return 0;
}

void StringField::keyPressEvent(QKeyEvent *event) {
    const int code = keyCode(*event);
    if (code && onKey) onKey(code);
    if (!keyDriven_) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    // Focus still moves on with Tab; everything else is the callback's business.
    if (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab) {
        event->ignore();
        return;
    }
    event->accept();
}

void StringField::inputMethodEvent(QInputMethodEvent *event) {
    if (keyDriven_) {
        event->accept();
        return;
    }
    QLineEdit::inputMethodEvent(event);
}

}  // namespace vcc::ui::qt
