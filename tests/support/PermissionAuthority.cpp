#include "support/PermissionAuthority.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QMap>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The answer of CheckAuthorization.
struct Verdict
{
    bool isGranted = false;
    bool asksUser = false;
    QMap<QString, QString> details;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Verdict &verdict)
{
    argument.beginStructure();
    argument << verdict.isGranted << verdict.asksUser << verdict.details;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Verdict &verdict)
{
    argument.beginStructure();
    argument >> verdict.isGranted >> verdict.asksUser >> verdict.details;
    argument.endStructure();
    return argument;
}

} // namespace

PermissionAuthority::PermissionAuthority()
{
    qDBusRegisterMetaType<QMap<QString, QString>>();
    qDBusRegisterMetaType<Verdict>();
}

bool PermissionAuthority::handleMessage(const QDBusMessage &message,
                                        const QDBusConnection &connection)
{
    if (message.member() != u"CheckAuthorization"_s)
        return false;
    const Verdict verdict{m_granting, false, {}};
    return connection.send(message.createReply(QVariant::fromValue(verdict)));
}

QString PermissionAuthority::introspect(const QString &) const
{
    return {};
}

} // namespace norvane
