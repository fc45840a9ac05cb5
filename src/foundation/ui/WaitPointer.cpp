#include "foundation/ui/WaitPointer.h"

#include <QCursor>
#include <QGuiApplication>

WaitPointer::WaitPointer()
{
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
}

WaitPointer::~WaitPointer()
{
    QGuiApplication::restoreOverrideCursor();
}
