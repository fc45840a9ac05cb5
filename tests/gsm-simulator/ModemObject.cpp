#include "gsm-simulator/ModemObject.h"

#include "support/WaitUntil.h"

#include <QDBusObjectPath>
#include <QDBusVariant>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto service = "org.freedesktop.ModemManager1"_L1;

QString interfaceName(const QString &interface)
{
    return service + u'.' + interface;
}

} // namespace

QVariant ModemObject::property(const QString &interface, const QString &name) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, m_path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message.setArguments({interfaceName(interface), name});
    const QDBusMessage reply = m_bus.call(message, QDBus::Block, hangMs);
    return reply.type() == QDBusMessage::ReplyMessage
               ? reply.arguments().constFirst().value<QDBusVariant>().variant()
               : QVariant();
}

QDBusMessage ModemObject::message(const QString &interface, const QString &method,
                                  const QVariantList &arguments) const
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(service, m_path, interfaceName(interface), method);
    message.setArguments(arguments);
    return message;
}

QDBusMessage ModemObject::call(const QString &interface, const QString &method,
                               const QVariantList &arguments) const
{
    return m_bus.call(message(interface, method, arguments), QDBus::Block, hangMs);
}

QDBusPendingCall ModemObject::callLater(const QString &interface, const QString &method) const
{
    return m_bus.asyncCall(message(interface, method, {}), hangMs);
}

ModemObject ModemObject::objectOf(const QString &interface, const QString &name) const
{
    return {m_bus, property(interface, name).value<QDBusObjectPath>().path()};
}

AddedMessages::AddedMessages(const QDBusConnection &bus, const QString &modemPath) : m_bus(bus)
{
    m_bus.connect(service, modemPath, interfaceName(u"Modem.Messaging"_s), u"Added"_s, this,
                  SLOT(note(QDBusMessage)));
}

void AddedMessages::note(const QDBusMessage &signal)
{
    const QVariantList arguments = signal.arguments();
    if (arguments.at(1).toBool())
        m_received.append({m_bus, arguments.at(0).value<QDBusObjectPath>().path()});
}

} // namespace norvane
