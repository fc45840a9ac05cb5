#include "support/PrivateBus.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int startLimit = hangMs;

void writeActivation(const QString &folder, const QString &command)
{
    QDir().mkpath(folder);
    QFile file(folder + u"/com.tovek.SMService.service"_s);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("no activation file");
    file.write("[D-BUS Service]\nName=com.tovek.SMService\nExec=" + command.toUtf8() + "\n");
}

} // namespace

PrivateBus::PrivateBus(const QString &activation)
    : m_formerAddress(qgetenv("DBUS_SESSION_BUS_ADDRESS"))
{
    if (!activation.isEmpty())
        writeActivation(m_folder.filePath(u"dbus-1/services"_s), activation);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_DATA_HOME"_s, m_folder.path());
    m_daemon.setProcessEnvironment(environment);
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(u"dbus-daemon"_s,
                   {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address=1"_s});
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

} // namespace norvane
