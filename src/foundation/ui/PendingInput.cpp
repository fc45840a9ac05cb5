#include "foundation/ui/PendingInput.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>
#include <QObject>

namespace norvane {

namespace {

/// Rounds of the event loop within which all of it has arrived. Other events may follow each other
/// for ever.
constexpr int maxRounds = 100;

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::TabletMove:
        return true;
    default:
        return false;
    }
}

class InputFilter : public QObject
{
public:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        // A box that a handler opens meanwhile is to be answered; it blocks the other windows.
        return !QApplication::activeModalWidget() && isInput(event->type());
    }
};

} // namespace

void dropPendingInput()
{
    InputFilter filter;
    QCoreApplication::instance()->installEventFilter(&filter);
    QAbstractEventDispatcher *const events = QAbstractEventDispatcher::instance();
    for (int round = 0; round < maxRounds && events->processEvents(QEventLoop::AllEvents); ++round)
        ;
}

} // namespace norvane
