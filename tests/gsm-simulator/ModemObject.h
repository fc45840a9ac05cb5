#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

namespace norvane {

using namespace Qt::StringLiterals;

/// An object of ModemManager's on the bus: a modem, a SIM or a message.
class ModemObject
{
public:
    ModemObject(const QDBusConnection &bus, const QString &path) : m_bus(bus), m_path(path) {}

    const QString &path() const { return m_path; }

    /// @param interface  behind "org.freedesktop.ModemManager1."
    QVariant property(const QString &interface, const QString &name) const;
    QDBusMessage call(const QString &interface, const QString &method,
                      const QVariantList &arguments = {}) const;
    QDBusPendingCall callLater(const QString &interface, const QString &method) const;

    /// The object that a property names.
    ModemObject objectOf(const QString &interface, const QString &name) const;

private:
    QDBusMessage message(const QString &interface, const QString &method,
                         const QVariantList &arguments) const;

    QDBusConnection m_bus;
    QString m_path;
};

/// The messages that a modem's signal Added tells of.
class AddedMessages : public QObject
{
    Q_OBJECT

public:
    AddedMessages(const QDBusConnection &bus, const QString &modemPath);

    const QList<ModemObject> &received() const { return m_received; }

private Q_SLOTS:
    void note(const QDBusMessage &signal);

private:
    QDBusConnection m_bus;
    QList<ModemObject> m_received;
};

} // namespace norvane
