#include "TovekSMService/modem/device/ManagedMailbox.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/manager/ManagerNames.h"

#include <QCryptographicHash>
#include <QDBusArgument>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Objects that are read in one turn.
constexpr qsizetype maxRead = 50;

/// The manager names no port of a message that isn't text; a notification of a picture message says
/// in its octets what it is (OMA MMS encapsulation, 7: the type of its content).
constexpr QByteArrayView pictureType = "application/vnd.wap.mms-message";

/// By which the message is known when it comes again, under another object too.
QByteArray identityOf(const QVariantMap &properties)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const auto name : {"PduType"_L1, "Number"_L1, "Timestamp"_L1, "DischargeTimestamp"_L1,
                            "MessageReference"_L1, "DeliveryState"_L1, "Text"_L1}) {
        hash.addData(properties.value(name).toString().toUtf8());
        hash.addData(QByteArrayView("\0", 1));
    }
    hash.addData(properties.value(u"Data"_s).toByteArray());
    return hash.result().toHex();
}

QDateTime momentOf(const QVariantMap &properties, const QString &name)
{
    return QDateTime::fromString(properties.value(name).toString(), Qt::ISODate);
}

DeliverPdu messageOf(const QVariantMap &properties)
{
    DeliverPdu message;
    message.sender = properties.value(u"Number"_s).toString();
    message.sentAt = momentOf(properties, u"Timestamp"_s);
    message.text = properties.value(u"Text"_s).toString();
    const QByteArray octets = properties.value(u"Data"_s).toByteArray();
    if (octets.contains(pictureType)) {
        message.content = DeliverPdu::Content::PictureNotification;
        message.text.clear();
    } else if (message.text.isEmpty() && !octets.isEmpty()) {
        message.content = DeliverPdu::Content::Binary;
        message.text = QString::fromLatin1(octets.toHex().toUpper());
    }
    return message;
}

/// Nothing where the manager gives no TP-Status (3GPP TS 23.040, 9.2.3.15: one octet).
std::optional<StatusReportPdu> reportOf(const QVariantMap &properties)
{
    constexpr uint maxStatus = 0xFF;
    const uint status = properties.value(u"DeliveryState"_s).toUInt();
    if (status > maxStatus)
        return std::nullopt;
    StatusReportPdu report;
    report.reference = static_cast<quint8>(properties.value(u"MessageReference"_s).toUInt());
    report.recipient = properties.value(u"Number"_s).toString();
    report.at = momentOf(properties, u"DischargeTimestamp"_s);
    report.status = static_cast<quint8>(status);
    return report;
}

bool isReceivedReport(const QVariantMap &properties)
{
    return properties.value(u"State"_s).toInt() == static_cast<int>(Manager::SmsState::Received) &&
           properties.value(u"PduType"_s).toInt() ==
               static_cast<int>(Manager::PduType::StatusReport);
}

} // namespace

ManagedMailbox::ManagedMailbox(const ModemTimings &timings, std::function<void()> due,
                               TimeSource &time)
    : m_timings(timings), m_due(std::move(due)), m_again(time), m_deleteAgain(time)
{
    QObject::connect(&m_again, &Timer::timeout, &m_again, [this] {
        m_toRead += std::exchange(m_later, {});
        m_toDelete += std::exchange(m_toDeleteLater, {});
        setDue();
    });
}

std::optional<Arrival> ManagedMailbox::arrivalOf(const QString &message,
                                                 const QVariantMap &properties)
{
    using Manager::PduType;
    if (properties.value(u"State"_s).toInt() != static_cast<int>(Manager::SmsState::Received))
        return std::nullopt;
    Arrival arrival{identityOf(properties), message.toUtf8(), 0, {}};
    switch (static_cast<PduType>(properties.value(u"PduType"_s).toInt())) {
    case PduType::Deliver:
        arrival.contents = messageOf(properties);
        return arrival;
    case PduType::StatusReport:
        if (const auto report = reportOf(properties)) {
            arrival.contents = *report;
            return arrival;
        }
        break;
    }
    return std::nullopt;
}

void ManagedMailbox::setUp(ManagerBus &bus, const QString &device)
{
    reset();
    m_bus = &bus;
    m_device = device;
    list();
}

void ManagedMailbox::list()
{
    m_bus->call(m_device, Manager::messaging, u"List"_s, {}, m_timings.slowCommandMs,
                [this](const QDBusMessage &reply) {
                    if (reply.type() == QDBusMessage::ErrorMessage) {
                        m_isListDue = true;
                        m_again.start(m_timings.mailAgainMs);
                    }
                    const auto messages =
                        qdbus_cast<QList<QDBusObjectPath>>(reply.arguments().value(0));
                    for (const QDBusObjectPath &message : messages)
                        note(message.path());
                });
}

void ManagedMailbox::reset()
{
    m_again.stop();
    m_deleteAgain.stop();
    m_isListDue = false;
    m_known.clear();
    m_bus = nullptr;
    m_device.clear();
    m_toRead.clear();
    m_later.clear();
    m_toDelete.clear();
    m_toDeleteLater.clear();
    m_kept.clear();
    m_isDue = false;
    m_read = nullptr;
    m_arrivals.clear();
}

void ManagedMailbox::note(const QString &message)
{
    if (m_bus == nullptr || m_toRead.contains(message) || m_kept.contains(message))
        return;
    m_known.insert(message);
    m_toRead.append(message);
    setDue();
}

void ManagedMailbox::noteComplete(const QString &message)
{
    if (m_known.contains(message))
        note(message);
}

void ManagedMailbox::setDue()
{
    if (!std::exchange(m_isDue, true))
        m_due();
}

void ManagedMailbox::dismiss(const QList<Arrival> &arrivals)
{
    m_toDelete += arrivals;
    m_isDue = m_isDue || !arrivals.isEmpty();
}

void ManagedMailbox::defer(const QList<Arrival> &arrivals)
{
    for (const Arrival &arrival : arrivals)
        m_later.append(QString::fromUtf8(arrival.memory));
    m_again.start(m_timings.mailAgainMs);
}

void ManagedMailbox::work(Read read)
{
    m_isDue = false;
    m_read = std::move(read);
    m_arrivals.clear();
    step();
}

void ManagedMailbox::step()
{
    if (!m_toDelete.isEmpty())
        deleteNext();
    else if (!m_toRead.isEmpty() && m_arrivals.size() < maxRead)
        readNext();
    else
        endTurn();
}

void ManagedMailbox::deleteNext()
{
    const Arrival arrival = m_toDelete.takeFirst();
    const QString message = QString::fromUtf8(arrival.memory);
    m_bus->call(m_device, Manager::messaging, u"Delete"_s,
                {QVariant::fromValue(QDBusObjectPath(message))}, m_timings.slowCommandMs,
                [this, arrival](const QDBusMessage &reply) {
                    if (reply.type() == QDBusMessage::ErrorMessage)
                        onNotDeleted(arrival, reply);
                    step();
                });
}

/// While it reads what came, the manager deletes nothing.
void ManagedMailbox::onNotDeleted(const Arrival &arrival, const QDBusMessage &error)
{
    if (error.errorName() == Manager::errors + "Core.Retry"_L1) {
        m_toDeleteLater.append(arrival);
        m_deleteAgain.start(m_timings.simPollMs);
        return;
    }
    const QString message = QString::fromUtf8(arrival.memory);
    qCWarning(logDevice).noquote() << "the modem manager doesn't delete" << message << ':'
                                   << error.errorName() << error.errorMessage();
    m_kept.insert(message);
}

void ManagedMailbox::readNext()
{
    const QString message = m_toRead.takeFirst();
    m_bus->call(message, Manager::properties, u"GetAll"_s, {QString(Manager::sms)},
                m_timings.commandMs, [this, message](const QDBusMessage &reply) {
                    if (reply.errorName() == "org.freedesktop.DBus.Error.NoReply"_L1) {
                        m_later.append(message);
                        m_again.start(m_timings.mailAgainMs);
                    }
                    // One that is gone has no properties.
                    const auto properties = qdbus_cast<QVariantMap>(reply.arguments().value(0));
                    if (const auto arrival = arrivalOf(message, properties))
                        m_arrivals.append(*arrival);
                    else if (isReceivedReport(properties))
                        m_toDelete.append({{}, message.toUtf8(), 0, {}}); // it says nothing
                    step();
                });
}

void ManagedMailbox::endTurn()
{
    m_isDue = !m_toDelete.isEmpty() || !m_toRead.isEmpty();
    const QList<Arrival> arrivals = std::exchange(m_arrivals, {});
    std::exchange(m_read, nullptr)(arrivals);
}

} // namespace norvane
