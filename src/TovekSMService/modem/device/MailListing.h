#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>

namespace norvane {

/// Something that came from the network, as the device handed it over.
struct Arrival
{
    /// Service centre address and TPDU, hexadecimal.
    QByteArray pdu;
    /// Where the device keeps it; empty for what was routed to us and is kept nowhere.
    QByteArray memory;
    int index = -1;

    bool isRouted() const { return memory.isEmpty(); }
    bool operator==(const Arrival &) const = default;
};

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

Q_DECLARE_METATYPE(norvane::Arrival)
