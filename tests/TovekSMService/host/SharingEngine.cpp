#include "TovekSMService/host/SharingEngine.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDir>
#include <QEventLoop>
#include <QFile>

#include <algorithm>
#include <csignal>

namespace norvane {

namespace {

constexpr char managerInterface[] = "com.tovek.SMService.SMSManager1";
constexpr char messagesInterface[] = "com.tovek.SMService.Messages1";

QString objectPath()
{
    return u"/com/tovek/SMService"_s;
}

/// Runs the event loop until the answer is there. (The bus connection's own way to do that,
/// QDBus::BlockWithGui, misses an answer that comes while it begins to wait.)
QDBusMessage answerTo(const QDBusMessage &call)
{
    const QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(call, hangMs));
    QEventLoop loop;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    loop.exec();
    return watcher.reply();
}

} // namespace

EngineListener::EngineListener(const QString &busName)
{
    for (const char *const interface : {managerInterface, messagesInterface})
        QDBusConnection::sessionBus().connect(busName, objectPath(), QLatin1String(interface),
                                              QString(), this, SLOT(hear(QDBusMessage)));
}

void EngineListener::hear(const QDBusMessage &event)
{
    QStringList words = {event.member()};
    for (const QVariant &argument : event.arguments())
        words << argument.toString();
    heard << words.join(u' ');
}

SharingEngine::SharingEngine(const QString &name, const QString &database,
                             const QStringList &simulator, const QByteArray &more)
    : m_name(name), m_device(simulator), m_listener(busName())
{
    writeSettings(database, more);
    EXPECT_EQ(run({u"--device"_s, m_device.link() + u", 115200"_s}).exitCode, 0);
}

SharingEngine::~SharingEngine()
{
    resume();
    m_process.kill();
    m_process.waitForFinished(hangMs);
    EXPECT_TRUE(waitUntil([this] { return !isUp(); }));
    QFile::remove(settingsFile());
}

QString SharingEngine::settingsFile() const
{
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane"_s;
    QDir().mkpath(folder);
    return folder +
           (m_name.isEmpty() ? u"/TovekSMService.ini"_s : u"/TovekSMService@%1.ini"_s.arg(m_name));
}

void SharingEngine::writeSettings(const QString &database, const QByteArray &more) const
{
    QFile file(settingsFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Queue]\nDatabase=" + database.toUtf8() + "\nName=" + label().toUtf8() + '\n' +
               more + "\n[Reports]\nDelivery=false\n");
}

bool SharingEngine::isUp() const
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(busName());
}

void SharingEngine::start()
{
    m_process.setProgram(program());
    m_process.setArguments(arguments());
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start();
    ASSERT_TRUE(m_process.waitForStarted(hangMs));
    ASSERT_TRUE(waitUntil([this] { return isUp(); }));
    call("ReportState");
}

void SharingEngine::kill()
{
    m_process.kill();
    ASSERT_TRUE(m_process.waitForFinished(hangMs));
    ASSERT_TRUE(waitUntil([this] { return !isUp(); }));
}

void SharingEngine::stop()
{
    m_process.terminate();
    ASSERT_TRUE(m_process.waitForFinished(hangMs));
    EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
    ASSERT_TRUE(waitUntil([this] { return !isUp(); }));
}

void SharingEngine::suspend()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP);
}

void SharingEngine::resume()
{
    if (m_process.state() == QProcess::Running)
        ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT);
}

QDBusMessage SharingEngine::message(const char *interface, const char *operation,
                                    const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        busName(), objectPath(), QLatin1String(interface), QLatin1String(operation));
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

QDBusMessage SharingEngine::call(const char *operation, const QVariantList &arguments) const
{
    return answerTo(message(managerInterface, operation, arguments));
}

QDBusMessage SharingEngine::question(const char *operation, const QVariantList &arguments) const
{
    return message(messagesInterface, operation, arguments);
}

QDBusMessage SharingEngine::ask(const char *operation, const QVariantList &arguments) const
{
    return answerTo(question(operation, arguments));
}

void SharingEngine::addMany(int messages, const QString &prefix) const
{
    for (int number = 0; number < messages; ++number)
        EXPECT_EQ(add(prefix + QString::number(number)).type(), QDBusMessage::ReplyMessage);
}

Ended SharingEngine::run(const QStringList &options) const
{
    QProcess process;
    process.start(program(), arguments() + options);
    EXPECT_TRUE(process.waitForFinished(hangMs));
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QStringList SharingEngine::received() const
{
    QStringList texts;
    for (const QJsonObject &message : m_device.messages())
        texts << message[u"text"_s].toString();
    return texts;
}

bool SharingEngine::isSubmitting() const
{
    return ControlClient(m_device.controlPath()).ask("count submitting").endsWith("1");
}

bool SharingEngine::hears(const QString &event)
{
    return waitUntil([&] {
        return std::any_of(m_listener.heard.cbegin(), m_listener.heard.cend(),
                           [&](const QString &heard) { return heard.startsWith(event); });
    });
}

} // namespace norvane
