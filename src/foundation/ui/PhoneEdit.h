#pragma once

#include <QLineEdit>

namespace norvane {

namespace PhoneKeys {

/// Whether a typed character may enter a phone number: "0" to "9", "+", backspace and carriage
/// return.
bool passes(QChar typed);

/// Whether a key press is swallowed: one that types characters of which any may not enter. Keys
/// that type nothing (arrows, Delete, Tab, the clipboard's) pass.
bool swallows(const QKeyEvent &event);

} // namespace PhoneKeys

/// A text box that phone numbers are typed into. Only typing is filtered: what is pasted stays as
/// it is.
class PhoneEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit PhoneEdit(QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
};

} // namespace norvane
