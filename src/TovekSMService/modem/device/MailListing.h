#pragma once

#include "TovekSMService/modem/device/Arrival.h"

#include <QByteArray>
#include <QList>

namespace norvane {

/// What an answer shows of a memory.
struct MailListing
{
    QList<Arrival> arrivals;
    QList<Arrival> truncated;  ///< shorter than the device says that they are
    bool isGarbled = false;    ///< something stands there that can't be understood
    bool isAllReceived = true; ///< nothing stands there that somebody wrote with the device

    /// @param tag    "+CMGL" or "+CMGR"
    /// @param index  of what was read alone; -1 where each tag names its own
    static MailListing of(const QList<QByteArray> &lines, QByteArrayView tag,
                          const QByteArray &memory, int index);

    /// Whether nothing stands there but what was received, and all of it was read.
    bool isWhole() const { return truncated.isEmpty() && !isGarbled && isAllReceived; }
};

/// Whether a PDU, hexadecimal with the service centre address, has fewer octets behind that address
/// than the device says (3GPP TS 27.005, 3.1: <length>). A length that is no number says nothing.
bool isTruncated(const QByteArray &pdu, const QByteArray &length);

} // namespace norvane
