#pragma once

#include "contract/DeliveryState.h"

#include <QList>
#include <QString>

namespace norvane {

// What the engine keeps of messages that have left the queue, and of those that came.

/// One row of the outcome log.
struct OutcomeRow
{
    qint64 id = 0;        ///< of the message, as in the queue
    QString at;           ///< "yyyy-MM-ddTHH:mm:ss", as the other moments
    QString deliveryDate; ///< as it was given
    QString phone;
    QString text;
    qint32 code = 0;   ///< 1 sent, else the error code
    QString reference; ///< the network's, of the last part; empty for none
    DeliveryState delivery = DeliveryState::None;
    QString deliveredAt; ///< empty unless it was delivered

    bool operator==(const OutcomeRow &) const = default;
};

/// A message that somebody sent to us, whole or as much of it as came.
struct ReceivedMessage
{
    qint64 id = 0;
    QString at;     ///< when it was whole here, "yyyy-MM-ddTHH:mm:ss"
    QString sentAt; ///< of its first part, by the network: ISO 8601 with its zone; may be empty
    QString phone;
    QString text;
    bool isRead = false;

    bool operator==(const ReceivedMessage &) const = default;
};

/// Somebody who wants no campaigns.
struct OptOut
{
    QString phone; ///< as it was given
    QString at;    ///< "yyyy-MM-ddTHH:mm:ss"

    bool operator==(const OptOut &) const = default;
};

/// Which outcomes or received messages are asked for.
struct MessageFilter
{
    QString from; ///< "yyyy-MM-ddTHH:mm:ss", or the beginning of it; empty for the first
    QString to;   ///< exclusive; empty for no end
    QString text; ///< that phone or text contain, without regard to case; empty for any
};

using BusOutcomeRows = QList<OutcomeRow>;
using BusReceivedMessages = QList<ReceivedMessage>;
using BusOptOuts = QList<OptOut>;

} // namespace norvane
