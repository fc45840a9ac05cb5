#pragma once

#include <QByteArray>
#include <QtEndian>

namespace norvane {

/// The bytes of a number as both kinds of workbook write it, the lowest first.
template <typename Number>
QByteArray little(Number number)
{
    QByteArray bytes(sizeof(Number), Qt::Uninitialized);
    qToLittleEndian(number, bytes.data());
    return bytes;
}

} // namespace norvane
