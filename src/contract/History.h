#pragma once

#include <QFlags>
#include <QList>
#include <QString>

namespace norvane {

// What the engine tells of every message, whether it waits, is on its way or has left the queue.

/// What has become of a message. The values cross the bus.
enum class MessageState : quint32 {
    Waiting = 0x01,   ///< in the queue, or being sent
    Sent = 0x02,      ///< the network has it; it hasn't said more, or doesn't know more
    Delivered = 0x04, ///< it is on the phone
    Refused = 0x08,   ///< the network had it and has given up
    Failed = 0x10,    ///< it was not sent
    InDoubt = 0x20,   ///< it may have been sent (-39)
};
Q_DECLARE_FLAGS(MessageStates, MessageState)
Q_DECLARE_OPERATORS_FOR_FLAGS(MessageStates)

/// Every state there is.
inline constexpr quint32 allMessageStates = 0x3F;

/// Which messages are asked for.
struct HistoryFilter
{
    QString from; ///< "yyyy-MM-ddTHH:mm:ss", or the beginning of it; empty for the first
    QString to;   ///< exclusive; empty for no end
    QString text; ///< that phone or text contain, without regard to case and accents
    MessageStates states = MessageStates::fromInt(allMessageStates);

    bool operator==(const HistoryFilter &) const = default;
};

/// One message.
struct HistoryRow
{
    qint64 id = 0;        ///< as in the queue, and the same behind it
    QString at;           ///< when it was queued, or else sent or failed; "yyyy-MM-ddTHH:mm:ss"
    QString deliveryDate; ///< as it was given
    QString phone;
    QString text;
    MessageState state = MessageState::Waiting;
    qint32 code = 0;     ///< 0 waiting, 1 sent, else the error code
    QString deliveredAt; ///< empty unless it was delivered

    bool operator==(const HistoryRow &) const = default;
};

/// What happened to a message at some moment.
enum class HistoryStep : quint32 {
    Queued = 1,
    Attempt = 2,   ///< one that failed and was followed by another; code: why
    Part = 3,      ///< a part was accepted by the network; code: 1
    Sent = 4,      ///< all of it was accepted; code: 1
    Failed = 5,    ///< code: why; -39 when it is in doubt
    Delivered = 6, ///< of one part; code: the network's status (3GPP TS 23.040, 9.2.3.15)
    Refused = 7,   ///< of one part; code: the network's status
    Pending = 8,   ///< of one part; code: the network's status, which is still trying
    Unknown = 9,   ///< of one part; the network doesn't know
};

struct HistoryEvent
{
    QString at; ///< "yyyy-MM-ddTHH:mm:ss"; empty where it isn't known
    HistoryStep step = HistoryStep::Queued;
    qint32 part = 0; ///< from 1 on; 0 for the message as a whole
    qint32 code = 0;
    QString reference; ///< the network's, of a part or of the last one; empty for none

    bool operator==(const HistoryEvent &) const = default;
};

/// What became of the messages that left the queue on one day.
struct HistoryDay
{
    QString day; ///< "yyyy-MM-dd"
    quint32 sent = 0;
    quint32 delivered = 0;
    quint32 refused = 0;
    quint32 failed = 0;
    quint32 inDoubt = 0;

    bool operator==(const HistoryDay &) const = default;
};

/// How many messages took how long from the network's acceptance to the phone.
struct DeliveryDelay
{
    quint32 upTo = 0; ///< seconds, inclusive; 0 for the last class, which has no end
    quint32 count = 0;

    bool operator==(const DeliveryDelay &) const = default;
};

/// Why messages failed or were refused.
struct FailureReason
{
    MessageState state = MessageState::Failed; ///< Failed, InDoubt or Refused
    qint32 code = 0; ///< the error code, or the network's status of a refused one; -1 if not known
    quint32 count = 0;

    bool operator==(const FailureReason &) const = default;
};

using BusHistoryRows = QList<HistoryRow>;
using BusHistoryEvents = QList<HistoryEvent>;
using BusHistoryDays = QList<HistoryDay>;
using BusDeliveryDelays = QList<DeliveryDelay>;
using BusFailureReasons = QList<FailureReason>;

} // namespace norvane
