#include "TovekSMService/host/EngineProcess.h"

#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDir>

#include <algorithm>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString busName()
{
    return u"com.tovek.SMService"_s;
}

QString objectPath()
{
    return u"/com/tovek/SMService"_s;
}

QString interfaceName()
{
    return u"com.tovek.SMService.SMSManager1"_s;
}

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const WireSettings &settings)
{
    argument.beginStructure();
    argument << settings.type << settings.pin << settings.mode << settings.protocol
             << settings.parameter;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, WireSettings &settings)
{
    argument.beginStructure();
    argument >> settings.type >> settings.pin >> settings.mode >> settings.protocol >>
        settings.parameter;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const WireEntry &entry)
{
    argument.beginStructure();
    argument << entry.phone << entry.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, WireEntry &entry)
{
    argument.beginStructure();
    argument >> entry.phone >> entry.text;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const WireRow &row)
{
    argument.beginStructure();
    argument << row.date << row.phone << row.text << row.id;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, WireRow &row)
{
    argument.beginStructure();
    argument >> row.date >> row.phone >> row.text >> row.id;
    argument.endStructure();
    return argument;
}

Listener::Listener(const QDBusConnection &bus, const QString &service)
{
    for (const char *const event : {"DeviceInfo", "EngineStatus", "SMSQueueChanged", "SMSSent",
                                    "SMSSentFailed", "WarningError"})
        EXPECT_TRUE(QDBusConnection(bus).connect(service, objectPath(), interfaceName(),
                                                 QLatin1String(event), this,
                                                 SLOT(hear(QDBusMessage))));
    for (const char *const event : {"DeliveryChanged", "Received"})
        EXPECT_TRUE(
            QDBusConnection(bus).connect(service, objectPath(), u"com.tovek.SMService.Messages1"_s,
                                         QLatin1String(event), this, SLOT(hear(QDBusMessage))));
}

bool Listener::has(const QString &beginning) const
{
    return std::any_of(heard.cbegin(), heard.cend(),
                       [&](const QString &event) { return event.startsWith(beginning); });
}

void Listener::hear(const QDBusMessage &event)
{
    QStringList words = {event.member()};
    for (const QVariant &argument : event.arguments())
        words << argument.toString();
    heard << words.join(u' ');
}

EngineProcess::EngineProcess()
{
    qDBusRegisterMetaType<WireSettings>();
    qDBusRegisterMetaType<WireEntry>();
    qDBusRegisterMetaType<QList<WireEntry>>();
    qDBusRegisterMetaType<WireRow>();
    qDBusRegisterMetaType<QList<WireRow>>();
    qDBusRegisterMetaType<QList<qlonglong>>();
    QDir(folder()).removeRecursively();
    m_engine.setProgram(program());
    m_engine.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

EngineProcess::~EngineProcess()
{
    kill();
    EXPECT_TRUE(until([] { return !isOnBus(); }));
}

QString EngineProcess::program()
{
    return QStringLiteral(NORVANE_BIN_DIR "/TovekSMService");
}

QString EngineProcess::folder()
{
    return qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService"_s;
}

QString EngineProcess::storeFile()
{
    return folder() + u"/queue.sqlite"_s;
}

unsigned EngineProcess::rightsOf(const QString &path)
{
    struct stat info = {};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &info), 0) << path.toStdString();
    return info.st_mode & 07777;
}

void EngineProcess::start()
{
    m_engine.start();
    ASSERT_TRUE(m_engine.waitForStarted(hangMs));
    ASSERT_TRUE(until([] { return isOnBus(); }));
}

void EngineProcess::stop()
{
    m_engine.terminate();
    ASSERT_TRUE(m_engine.waitForFinished(hangMs));
    EXPECT_EQ(m_engine.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_engine.exitCode(), 0);
}

void EngineProcess::kill()
{
    m_engine.kill();
    m_engine.waitForFinished(hangMs);
}

bool EngineProcess::isOnBus(const QDBusConnection &bus)
{
    return bus.interface()->isServiceRegistered(busName());
}

Ended EngineProcess::run(const QStringList &arguments, const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program(), arguments);
    EXPECT_TRUE(process.waitForFinished(hangMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QDBusMessage EngineProcess::request(const char *operation, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(busName(), objectPath(), interfaceName(),
                                                          QLatin1String(operation));
    message.setArguments(arguments);
    return message;
}

QDBusMessage EngineProcess::call(const char *operation, const QVariantList &arguments,
                                 const QDBusConnection &bus)
{
    const QDBusMessage answer = bus.call(request(operation, arguments), QDBus::Block, hangMs);
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage)
        << operation << ": " << answer.errorMessage().toStdString();
    return answer;
}

int EngineProcess::callForNumber(const char *operation)
{
    return call(operation).arguments().value(0).toInt();
}

void EngineProcess::addSMS(const QString &phone, const QString &text, const QString &date)
{
    call("AddSMS", {phone, text, date});
}

QList<WireRow> EngineProcess::queue()
{
    const QDBusMessage page = call("GetQueue", {qulonglong(0), uint(0)});
    return qdbus_cast<QList<WireRow>>(page.arguments().value(2));
}

WireSettings EngineProcess::settings()
{
    return qdbus_cast<WireSettings>(call("GetDeviceSettings").arguments().value(0));
}

bool EngineProcess::setSettings(const WireSettings &settings)
{
    return call("SetDeviceSettings", {QVariant::fromValue(settings)}).arguments().value(0).toBool();
}

WireSettings EngineProcess::noDevice()
{
    return {0, QString(), 1, 1, u"/no/such/device, 9600"_s};
}

} // namespace norvane
