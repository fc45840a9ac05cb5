#pragma once

#include "TovekSMService/modem/codec/IncomingPdu.h"

#include <QByteArray>
#include <QMetaType>

#include <optional>
#include <variant>

namespace norvane {

/// Something that came from the network, as the device handed it over.
struct Arrival
{
    /// What was read of it already, where the device's owner gives no PDU.
    using Contents = std::variant<std::monostate, DeliverPdu, StatusReportPdu>;

    /// Service centre address and TPDU, hexadecimal; without a PDU, what it is known by when it
    /// comes again.
    QByteArray pdu;
    /// Where the device keeps it; empty for what was routed to us and is kept nowhere.
    QByteArray memory;
    int index = -1;
    Contents contents = {};

    bool isRouted() const { return memory.isEmpty(); }
    bool operator==(const Arrival &other) const
    {
        return pdu == other.pdu && memory == other.memory && index == other.index;
    }
};

} // namespace norvane

Q_DECLARE_METATYPE(norvane::Arrival)
