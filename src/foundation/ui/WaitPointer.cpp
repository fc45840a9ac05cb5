#include "foundation/ui/WaitPointer.h"

#include <QCursor>
#include <QGuiApplication>

namespace norvane {

WaitPointer::WaitPointer()
{
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
}

WaitPointer::~WaitPointer()
{
    QGuiApplication::restoreOverrideCursor();
}

} // namespace norvane
