#include "TovekSMService/admin/RunningEngine.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

namespace norvane {

bool RunningEngine::isThere() const
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface()->isServiceRegistered(m_busName);
}

Result<QDBusMessage, AdminFailure> RunningEngine::callOn(const char *interface,
                                                         const char *operation,
                                                         const QVariantList &arguments) const
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(m_busName, QLatin1String(Bus::objectPath),
                                       QLatin1String(interface), QLatin1String(operation));
    message.setArguments(arguments);
    message.setAutoStartService(false);
    const QDBusMessage answer =
        QDBusConnection::sessionBus().call(message, QDBus::Block, Bus::callTimeout);
    if (answer.type() != QDBusMessage::ReplyMessage)
        return failed(AdminFailure{answer.errorMessage()});
    return answer;
}

Result<QList<QueueRow>, AdminFailure> RunningEngine::queue() const
{
    QList<QueueRow> rows;
    quint64 snapshot = 0;
    quint32 total = 0;
    do {
        const auto answer =
            call("GetQueue", {QVariant(snapshot), QVariant(static_cast<quint32>(rows.size()))});
        if (!answer)
            return failed(answer.error());
        const QVariantList page = answer->arguments();
        if (page.at(0).toULongLong() != snapshot)
            rows.clear();
        snapshot = page.at(0).toULongLong();
        total = page.at(1).toUInt();
        const auto received = qdbus_cast<BusQueueRows>(page.at(2));
        if (received.isEmpty())
            break;
        rows += received;
    } while (static_cast<quint32>(rows.size()) < total);
    return rows;
}

} // namespace norvane
