#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

namespace norvane {

/// By which a PDU that a device handed over is known when it comes again.
inline QByteArray pduDigest(const QByteArray &pdu, const QString &sim)
{
    return QCryptographicHash::hash(sim.toUtf8() + '\n' + pdu.toUpper(),
                                    QCryptographicHash::Sha256);
}

} // namespace norvane
