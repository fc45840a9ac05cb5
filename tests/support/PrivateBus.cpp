#include "support/PrivateBus.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>

namespace {

constexpr int startLimit = hangMs;

void writeActivation(const QString &folder, const QString &command)
{
    QDir().mkpath(folder);
    QFile file(folder + QStringLiteral("/com.tovek.SMService.service"));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("no activation file");
    file.write("[D-BUS Service]\nName=com.tovek.SMService\nExec=" + command.toUtf8() + "\n");
}

} // namespace

PrivateBus::PrivateBus(const QString &activation)
    : m_formerAddress(qgetenv("DBUS_SESSION_BUS_ADDRESS"))
{
    if (!activation.isEmpty())
        writeActivation(m_folder.filePath(QStringLiteral("dbus-1/services")), activation);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_folder.path());
    m_daemon.setProcessEnvironment(environment);
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"),
                    QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
    if (!m_daemon.waitForStarted(startLimit) || !m_daemon.waitForReadyRead(startLimit))
        qFatal("no bus");
    const QByteArray address = m_daemon.readLine().trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    m_name = QString::fromLatin1(address);
    QDBusConnection::connectToBus(m_name, m_name);
}

PrivateBus::~PrivateBus()
{
    QDBusConnection::disconnectFromBus(m_name);
    m_daemon.terminate();
    m_daemon.waitForFinished(startLimit);
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_formerAddress);
}
