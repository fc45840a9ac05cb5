#include "foundation/ui/PhoneEdit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>

#include <algorithm>
#include <limits>

namespace norvane {

bool PhoneKeys::passes(QChar typed)
{
    return (typed >= u'0' && typed <= u'9') || typed == u'+' || typed == u'\b' || typed == u'\r';
}

bool PhoneKeys::swallows(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    if (modifiers.testFlag(Qt::ControlModifier) && !modifiers.testFlag(Qt::AltModifier) &&
        !modifiers.testFlag(Qt::KeypadModifier))
        return false; // a shortcut; with Alt as well it types, as AltGr
    const QString typed = event.text();
    const bool types = std::any_of(typed.cbegin(), typed.cend(), [](QChar character) {
        return character.category() != QChar::Other_Control;
    });
    return types && !std::all_of(typed.cbegin(), typed.cend(), passes);
}

PhoneEdit::PhoneEdit(QWidget *parent) : QLineEdit(parent)
{
    setMaxLength(std::numeric_limits<int>::max());
}

void PhoneEdit::keyPressEvent(QKeyEvent *event)
{
    if (PhoneKeys::swallows(*event)) {
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void PhoneEdit::inputMethodEvent(QInputMethodEvent *event)
{
    QString typed = event->commitString();
    typed.removeIf([](QChar character) { return !PhoneKeys::passes(character); });
    event->setCommitString(typed, event->replacementStart(), event->replacementLength());
    QLineEdit::inputMethodEvent(event);
}

} // namespace norvane
