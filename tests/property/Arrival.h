#pragma once

#include <QList>
#include <QString>

namespace norvane {

using namespace Qt::StringLiterals;

/// What arrives of a message.
struct Arrival
{
    QString text;       ///< put together from the parts
    QList<QString> cut; ///< the parts' texts, in their order
};

/// Encodes a text, hands the parts to two decoders in another order than their own, and puts them
/// together by what their headers say. Fails the present test where the decoders differ from each
/// other or a part from what was asked for.
Arrival arrivalOf(const QString &text, const QString &phone = u"+34600111222"_s,
                  quint16 reference = 0xBEEF);

} // namespace norvane
