#pragma once

#include "TovekSMService/modem/codec/IncomingPdu.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace norvane {

/// Reads the fields of a PDU one after the other. What goes beyond the end gives a failure, and so
/// does everything that is read after it.
class PduCursor
{
public:
    /// @param hex  service centre address and TPDU; the former is skipped
    explicit PduCursor(const QByteArray &hex);

    quint8 octet();
    QByteArray octets(qsizetype count);
    QByteArray rest();
    /// TP-Originating-Address and its like (3GPP TS 23.040, 9.1.2.5): "+" and digits, digits, or
    /// letters.
    QString address();
    /// TP-Service-Centre-Time-Stamp and its like (3GPP TS 23.040, 9.2.3.11), with its zone; invalid
    /// where its digits make no moment.
    QDateTime timestamp();

    /// The first failure.
    std::optional<PduFailure> failure() const { return m_failure; }
    void fail(PduFailure failure);

private:
    QByteArray m_octets;
    qsizetype m_position = 0;
    std::optional<PduFailure> m_failure;
};

} // namespace norvane
