#pragma once

#include "contract/DeviceSettings.h"
#include "contract/History.h"
#include "contract/Messages.h"
#include "contract/QueueRecordSet.h"
#include "contract/SMSList.h"

#include <QDBusArgument>
#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QString>

namespace norvane {

// The contract's records in the bus's own form, and the names under which the engine is found.

namespace Bus {

inline constexpr char serviceName[] = "com.tovek.SMService";
inline constexpr char objectPath[] = "/com/tovek/SMService";
inline constexpr char interfaceName[] = "com.tovek.SMService.SMSManager1";
inline constexpr char messagesInterfaceName[] = "com.tovek.SMService.Messages1";

/// The error of a question that a newer one of the same caller has taken the place of.
inline constexpr char supersededError[] = "com.tovek.SMService.Error.Superseded";
/// The error of a question that took too long, or whose store another process had locked.
inline constexpr char busyError[] = "com.tovek.SMService.Error.Busy";

/// Rows in one page of GetQueue.
inline constexpr quint32 queuePageRows = 4000;
/// Rows in one page of GetOutcomes, GetReceived, GetHistory and GetInbox at most.
inline constexpr quint32 maxPageRows = 1000;

/// How long a call may take before it counts as failed, in milliseconds.
inline constexpr int callTimeout = 15'000;
inline constexpr int testDeviceTimeout = 200'000;
/// The engine answers TestDevice within this time whatever the device does, in milliseconds.
inline constexpr int testDeviceAnswer = 150'000;

/// Makes the record types known to the bus library; to be called once before any call.
void registerTypes();

/// "yyyy-MM-ddTHH:mm:ss"
QString dateText(const QDateTime &moment);

/// `text` with a space in place of each NUL: a string on the bus can't hold one.
QString withoutNul(const QString &text);

} // namespace Bus

using BusSMSList = QList<SMSList::Entry>;
using BusQueueRows = QList<QueueRow>;

QDBusArgument &operator<<(QDBusArgument &argument, const DeviceSettings &settings);
const QDBusArgument &operator>>(const QDBusArgument &argument, DeviceSettings &settings);
QDBusArgument &operator<<(QDBusArgument &argument, const SMSList::Entry &entry);
const QDBusArgument &operator>>(const QDBusArgument &argument, SMSList::Entry &entry);
QDBusArgument &operator<<(QDBusArgument &argument, const QueueRow &row);
const QDBusArgument &operator>>(const QDBusArgument &argument, QueueRow &row);
QDBusArgument &operator<<(QDBusArgument &argument, const OutcomeRow &row);
const QDBusArgument &operator>>(const QDBusArgument &argument, OutcomeRow &row);
QDBusArgument &operator<<(QDBusArgument &argument, const ReceivedMessage &message);
const QDBusArgument &operator>>(const QDBusArgument &argument, ReceivedMessage &message);
QDBusArgument &operator<<(QDBusArgument &argument, const OptOut &optOut);
const QDBusArgument &operator>>(const QDBusArgument &argument, OptOut &optOut);
QDBusArgument &operator<<(QDBusArgument &argument, const HistoryRow &row);
const QDBusArgument &operator>>(const QDBusArgument &argument, HistoryRow &row);
QDBusArgument &operator<<(QDBusArgument &argument, const HistoryEvent &event);
const QDBusArgument &operator>>(const QDBusArgument &argument, HistoryEvent &event);
QDBusArgument &operator<<(QDBusArgument &argument, const HistoryDay &day);
const QDBusArgument &operator>>(const QDBusArgument &argument, HistoryDay &day);
QDBusArgument &operator<<(QDBusArgument &argument, const DeliveryDelay &delay);
const QDBusArgument &operator>>(const QDBusArgument &argument, DeliveryDelay &delay);
QDBusArgument &operator<<(QDBusArgument &argument, const FailureReason &reason);
const QDBusArgument &operator>>(const QDBusArgument &argument, FailureReason &reason);

} // namespace norvane

Q_DECLARE_METATYPE(norvane::DeviceSettings)
Q_DECLARE_METATYPE(norvane::SMSList::Entry)
Q_DECLARE_METATYPE(norvane::QueueRow)
Q_DECLARE_METATYPE(norvane::OutcomeRow)
Q_DECLARE_METATYPE(norvane::ReceivedMessage)
Q_DECLARE_METATYPE(norvane::OptOut)
Q_DECLARE_METATYPE(norvane::HistoryRow)
Q_DECLARE_METATYPE(norvane::HistoryEvent)
Q_DECLARE_METATYPE(norvane::HistoryDay)
Q_DECLARE_METATYPE(norvane::DeliveryDelay)
Q_DECLARE_METATYPE(norvane::FailureReason)
