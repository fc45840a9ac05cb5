#include "foundation/ui/Application.h"

#include "foundation/ui/FatalReport.h"

bool Application::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        FatalReport::report(std::current_exception());
        return false;
    }
}
