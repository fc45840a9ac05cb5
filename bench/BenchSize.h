#pragma once

#include <QCoreApplication>

/// `full`, or `smallest` for a program that was started with the word "smallest": the tests run
/// each benchmark so, once, to see that it still works.
inline int benchSize(int full, int smallest = 1)
{
    return QCoreApplication::arguments().contains(QLatin1String("smallest")) ? smallest : full;
}
