#pragma once

#include <QCoreApplication>

namespace norvane {

using namespace Qt::StringLiterals;

/// `full`, or `smallest` for a program that was started with the word "smallest": the tests run
/// each benchmark so, once, to see that it still works.
inline int benchSize(int full, int smallest = 1)
{
    return QCoreApplication::arguments().contains("smallest"_L1) ? smallest : full;
}

} // namespace norvane
