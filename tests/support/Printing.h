#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QRect>
#include <QString>
#include <QStringList>

#include <ostream>

namespace norvane {

// How a failing test shows the toolkit's values.

inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QSize &size, std::ostream *out)
{
    *out << size.width() << 'x' << size.height();
}

inline void PrintTo(const QRect &rect, std::ostream *out)
{
    *out << '(' << rect.x() << ", " << rect.y() << ") " << rect.width() << 'x' << rect.height();
}

inline void PrintTo(const QDateTime &moment, std::ostream *out)
{
    *out << moment.toString(Qt::ISODateWithMs).toStdString();
}

} // namespace norvane
