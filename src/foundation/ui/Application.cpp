#include "foundation/ui/Application.h"

#include "foundation/ui/FatalReport.h"

namespace norvane {

Application::Application(int &argc, char **argv) : QApplication(argc, argv)
{
    installEventFilter(&m_pressFocus);
    installEventFilter(&m_wheelFocus);
}

bool Application::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        FatalReport::report(std::current_exception());
        return false;
    }
}

} // namespace norvane
