#include "contract/BusTypes.h"

#include <QDBusMetaType>

namespace norvane {

using namespace Qt::StringLiterals;

void Bus::registerTypes()
{
    // The bus library looks the types of arguments up by their names in the declaration.
    qRegisterMetaType<BusSMSList>("norvane::BusSMSList");
    qRegisterMetaType<BusQueueRows>("norvane::BusQueueRows");
    qRegisterMetaType<BusOutcomeRows>("norvane::BusOutcomeRows");
    qRegisterMetaType<BusReceivedMessages>("norvane::BusReceivedMessages");
    qRegisterMetaType<BusOptOuts>("norvane::BusOptOuts");
    qRegisterMetaType<BusHistoryRows>("norvane::BusHistoryRows");
    qRegisterMetaType<BusHistoryEvents>("norvane::BusHistoryEvents");
    qRegisterMetaType<BusHistoryDays>("norvane::BusHistoryDays");
    qRegisterMetaType<BusDeliveryDelays>("norvane::BusDeliveryDelays");
    qRegisterMetaType<BusFailureReasons>("norvane::BusFailureReasons");
    qDBusRegisterMetaType<DeviceSettings>();
    qDBusRegisterMetaType<SMSList::Entry>();
    qDBusRegisterMetaType<BusSMSList>();
    qDBusRegisterMetaType<QueueRow>();
    qDBusRegisterMetaType<BusQueueRows>();
    qDBusRegisterMetaType<OutcomeRow>();
    qDBusRegisterMetaType<BusOutcomeRows>();
    qDBusRegisterMetaType<ReceivedMessage>();
    qDBusRegisterMetaType<BusReceivedMessages>();
    qDBusRegisterMetaType<OptOut>();
    qDBusRegisterMetaType<BusOptOuts>();
    qDBusRegisterMetaType<HistoryRow>();
    qDBusRegisterMetaType<BusHistoryRows>();
    qDBusRegisterMetaType<HistoryEvent>();
    qDBusRegisterMetaType<BusHistoryEvents>();
    qDBusRegisterMetaType<HistoryDay>();
    qDBusRegisterMetaType<BusHistoryDays>();
    qDBusRegisterMetaType<DeliveryDelay>();
    qDBusRegisterMetaType<BusDeliveryDelays>();
    qDBusRegisterMetaType<FailureReason>();
    qDBusRegisterMetaType<BusFailureReasons>();
    qDBusRegisterMetaType<QList<qlonglong>>();
}

QString Bus::dateText(const QDateTime &moment)
{
    return moment.toString(u"yyyy-MM-ddTHH:mm:ss"_s);
}

QString Bus::withoutNul(const QString &text)
{
    QString clean = text;
    return clean.replace(QChar(u'\0'), QChar(u' '));
}

QDBusArgument &operator<<(QDBusArgument &argument, const DeviceSettings &settings)
{
    argument.beginStructure();
    argument << settings.DeviceType << settings.PINCode << settings.ConnectionMode
             << settings.Protocol << settings.Parameter;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DeviceSettings &settings)
{
    argument.beginStructure();
    argument >> settings.DeviceType >> settings.PINCode >> settings.ConnectionMode >>
        settings.Protocol >> settings.Parameter;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const SMSList::Entry &entry)
{
    argument.beginStructure();
    argument << entry.phone << entry.message;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, SMSList::Entry &entry)
{
    argument.beginStructure();
    argument >> entry.phone >> entry.message;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const QueueRow &row)
{
    argument.beginStructure();
    argument << row.deliveryDate << row.phone << row.message << row.id;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, QueueRow &row)
{
    argument.beginStructure();
    argument >> row.deliveryDate >> row.phone >> row.message >> row.id;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const OutcomeRow &row)
{
    argument.beginStructure();
    argument << row.id << row.at << row.deliveryDate << row.phone << row.text << row.code
             << row.reference << QString::fromLatin1(nameOf(row.delivery)) << row.deliveredAt;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, OutcomeRow &row)
{
    QString delivery;
    argument.beginStructure();
    argument >> row.id >> row.at >> row.deliveryDate >> row.phone >> row.text >> row.code >>
        row.reference >> delivery >> row.deliveredAt;
    argument.endStructure();
    row.delivery = deliveryNamed(delivery);
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const ReceivedMessage &message)
{
    argument.beginStructure();
    argument << message.id << message.at << message.sentAt << Bus::withoutNul(message.phone)
             << Bus::withoutNul(message.text) << message.isRead;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, ReceivedMessage &message)
{
    argument.beginStructure();
    argument >> message.id >> message.at >> message.sentAt >> message.phone >> message.text >>
        message.isRead;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const OptOut &optOut)
{
    argument.beginStructure();
    argument << optOut.phone << optOut.at;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, OptOut &optOut)
{
    argument.beginStructure();
    argument >> optOut.phone >> optOut.at;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const HistoryRow &row)
{
    argument.beginStructure();
    argument << row.id << row.at << Bus::withoutNul(row.deliveryDate) << Bus::withoutNul(row.phone)
             << Bus::withoutNul(row.text) << static_cast<quint32>(row.state) << row.code
             << row.deliveredAt;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, HistoryRow &row)
{
    quint32 state = 0;
    argument.beginStructure();
    argument >> row.id >> row.at >> row.deliveryDate >> row.phone >> row.text >> state >>
        row.code >> row.deliveredAt;
    argument.endStructure();
    row.state = static_cast<MessageState>(state);
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const HistoryEvent &event)
{
    argument.beginStructure();
    argument << event.at << static_cast<quint32>(event.step) << event.part << event.code
             << event.reference;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, HistoryEvent &event)
{
    quint32 step = 0;
    argument.beginStructure();
    argument >> event.at >> step >> event.part >> event.code >> event.reference;
    argument.endStructure();
    event.step = static_cast<HistoryStep>(step);
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const HistoryDay &day)
{
    argument.beginStructure();
    argument << day.day << day.sent << day.delivered << day.refused << day.failed << day.inDoubt;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, HistoryDay &day)
{
    argument.beginStructure();
    argument >> day.day >> day.sent >> day.delivered >> day.refused >> day.failed >> day.inDoubt;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DeliveryDelay &delay)
{
    argument.beginStructure();
    argument << delay.upTo << delay.count;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DeliveryDelay &delay)
{
    argument.beginStructure();
    argument >> delay.upTo >> delay.count;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const FailureReason &reason)
{
    argument.beginStructure();
    argument << static_cast<quint32>(reason.state) << reason.code << reason.count;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, FailureReason &reason)
{
    quint32 state = 0;
    argument.beginStructure();
    argument >> state >> reason.code >> reason.count;
    argument.endStructure();
    reason.state = static_cast<MessageState>(state);
    return argument;
}

} // namespace norvane
