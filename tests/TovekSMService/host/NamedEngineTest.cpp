#include "TovekSMService/host/EngineProcess.h"
#include "gsm-simulator/RunningSimulator.h"

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/log/EngineLog.h"
#include "TovekSMService/platform/FileLock.h"
#include "TovekSMService/store/EngineName.h"
#include "TovekSMService/store/OtherConnection.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <algorithm>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The unnamed engine, and one that is named "second".
class NamedEngine : public EngineProcess
{
protected:
    NamedEngine()
    {
        m_second.setProgram(program());
        m_second.setArguments(named());
        m_second.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    }
    ~NamedEngine() override
    {
        m_second.kill();
        m_second.waitForFinished(hangMs);
        EXPECT_TRUE(until([] { return !isSecondOnBus(); }));
    }

    static QStringList named() { return {u"--name"_s, u"second"_s}; }
    static QString busName() { return u"com.tovek.SMService.second"_s; }
    static QString secondFolder() { return folder() + u"/engines/second"_s; }
    static QString secondStore() { return secondFolder() + u"/queue.sqlite"_s; }
    static bool isSecondOnBus()
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(busName());
    }
    void startSecond()
    {
        m_second.start();
        ASSERT_TRUE(m_second.waitForStarted(hangMs));
        ASSERT_TRUE(until([] { return isSecondOnBus(); }));
    }
    void stopSecond()
    {
        m_second.terminate();
        ASSERT_TRUE(m_second.waitForFinished(hangMs));
        EXPECT_EQ(m_second.exitCode(), 0);
        EXPECT_TRUE(until([] { return !isSecondOnBus(); }));
    }

    static QDBusMessage askSecond(const char *operation, const QVariantList &arguments = {},
                                  const QString &interface = u"SMSManager1"_s)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(busName(), u"/com/tovek/SMService"_s,
                                                              u"com.tovek.SMService."_s + interface,
                                                              QLatin1String(operation));
        message.setArguments(arguments);
        const QDBusMessage answer =
            QDBusConnection::sessionBus().call(message, QDBus::Block, hangMs);
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage)
            << operation << ": " << answer.errorMessage().toStdString();
        return answer;
    }
    static int queueSizeOfSecond()
    {
        return askSecond("GetQueueSize").arguments().value(0).toInt();
    }
    /// Runs the program for the second engine.
    static Ended runSecond(const QStringList &arguments) { return run(named() + arguments); }
    static QString json(const QString &member, const QStringList &name)
    {
        const Ended ended = run(name + QStringList{u"--status"_s, u"--json"_s});
        return QJsonDocument::fromJson(ended.out.toUtf8())[member].toVariant().toString();
    }
    static void useDevice(const QStringList &name, const QString &path)
    {
        const QString parameter = path + u", 115200"_s;
        EXPECT_EQ(run(name + QStringList{u"--device"_s, parameter}).exitCode, 0);
    }
    /// What a device was given, as "number text".
    static QStringList receivedBy(const RunningSimulator &device)
    {
        QStringList result;
        for (const QJsonObject &message : device.messages())
            result << message[u"number"].toString() + u' ' + message[u"text"].toString();
        return result;
    }

    QProcess m_second;
};

TEST_F(NamedEngine, hasAFolderForItsOwnerAloneAndABusNameOfItsOwn)
{
    ASSERT_TRUE(QDir().mkpath(secondFolder()));
    const QStringList folders = {folder(), folder() + u"/engines"_s, secondFolder()};
    for (const QString &each : folders)
        ASSERT_EQ(::chmod(QFile::encodeName(each).constData(), 0755), 0);
    startSecond();
    askSecond("AddSMS", {u"600"_s, u"text"_s, QString()});
    EXPECT_FALSE(isOnBus());
    for (const QString &each : folders)
        EXPECT_EQ(rightsOf(each), 0700U) << each.toStdString();
    for (const char *const name : {"/queue.sqlite", "/engine.lock"}) {
        EXPECT_EQ(rightsOf(secondFolder() + QLatin1String(name)), 0600U);
        EXPECT_FALSE(QFile::exists(folder() + QLatin1String(name)));
    }
}

TEST_F(NamedEngine, sendsBesideTheUnnamedOneAndEachWhatWasQueuedWithIt)
{
    const RunningSimulator device;
    const RunningSimulator other;
    ASSERT_TRUE(device.isReady() && other.isReady());
    start();
    startSecond();
    useDevice({}, device.link());
    useDevice(named(), other.link());
    const QDBusConnection bus = QDBusConnection::sessionBus();
    Listener listener(bus);
    Listener listenerOfSecond(bus, busName());
    call("ReportState");
    askSecond("ReportState");
    addSMS(u"600"_s, u"one"_s, u"2024-05-01T12:00:00"_s);
    askSecond("AddSMS", {u"601"_s, u"two"_s, u"2024-05-01T12:00:00"_s});
    call("StartEngine");
    askSecond("StartEngine");
    ASSERT_TRUE(until([&] {
        return listener.has(u"SMSSent 600 one"_s) && listenerOfSecond.has(u"SMSSent 601 two"_s);
    }));
    EXPECT_EQ(receivedBy(device), QStringList{u"600 one"_s});
    EXPECT_EQ(receivedBy(other), QStringList{u"601 two"_s});
    EXPECT_FALSE(listener.has(u"SMSSent 601"_s));
    EXPECT_FALSE(listenerOfSecond.has(u"SMSSent 600"_s));
}

TEST_F(NamedEngine, keepsItsQueueAndLeavesTheOtherOneItsOwnWhenItEnds)
{
    start();
    startSecond();
    addSMS(u"600"_s, u"text"_s, u"2100-01-01T00:00:00"_s);
    for (const char *const phone : {"601", "602"})
        askSecond("AddSMS", {QLatin1String(phone), u"text"_s, u"2100-01-01T00:00:00"_s});
    stopSecond();
    EXPECT_EQ(callForNumber("GetQueueSize"), 1);
    stop();
    startSecond();
    EXPECT_FALSE(isOnBus());
    EXPECT_EQ(queueSizeOfSecond(), 2);
}

TEST_F(NamedEngine, isAskedAndToldByItsNameWhileItRuns)
{
    start();
    startSecond();
    askSecond("AddSMS", {u"601"_s, u"two"_s, u"2100-01-01T00:00:00"_s});
    EXPECT_EQ(
        runSecond({u"--device"_s, u"/no/such/device, 9600"_s, u"--pin"_s, u"1234"_s}).exitCode, 0);
    EXPECT_EQ(runSecond({u"--status"_s}).out,
              u"engine: stopped\nqueue: 1\ndevice: /no/such/device, 9600\npin: set\n"
              "trouble: none\n"_s);
    EXPECT_EQ(run({u"--status"_s}).out, u"engine: stopped\nqueue: 0\ndevice: COM1, 9600\n"
                                        "pin: none\ntrouble: none\n"_s);
    EXPECT_EQ(runSecond({u"--queue"_s}).out, u"2100-01-01T00:00:00\t601\ttwo\n"_s);
    EXPECT_EQ(run({u"--queue"_s}).out, QString());
    EXPECT_EQ(runSecond({u"--opt-out"_s, u"add"_s, u"612345678"_s}).exitCode, 0);
    EXPECT_TRUE(runSecond({u"--opt-out"_s, u"list"_s}).out.endsWith(u"\t612345678\n"_s));
    EXPECT_EQ(run({u"--opt-out"_s, u"list"_s}).out, QString());
    stopSecond();
    EXPECT_EQ(json(u"engine"_s, named()), u"not up"_s);
    EXPECT_EQ(json(u"engine"_s, {}), u"stopped"_s);
}

TEST_F(NamedEngine, isReadAndChangedInItsFilesWhileItIsNotUp)
{
    start(); // which has nothing to say for the other one
    EXPECT_EQ(runSecond({u"--device"_s, u"COM7, 9600"_s, u"--pin"_s, u"1234"_s}).exitCode, 0);
    EXPECT_EQ(runSecond({u"--status"_s}).out,
              u"engine: not up, stopped\nqueue: 0\ndevice: COM7, 9600\npin: set\n"_s);
    EXPECT_EQ(runSecond({u"--opt-out"_s, u"add"_s, u"612345678"_s}).exitCode, 0);
    OtherConnection(secondStore())
        .run(u"INSERT INTO outcome (message_id, delivery_date, phone, text, code, "
             "network_reference, at, reported) VALUES (1, '2026-01-01T00:00:00', '601', 'two', 1, "
             "7, '2096-05-01T10:00:00', 1)"_s);
    EXPECT_TRUE(runSecond({u"--report"_s}).out.contains(u"\t601\tsent\t1\t7\ttwo\t"_s));
    EXPECT_EQ(run({u"--report"_s}).out, QString());
    EXPECT_EQ(runSecond({u"--inbox"_s}).exitCode, 0);

    const QTemporaryDir elsewhere;
    const QString copy = elsewhere.filePath(u"copy.sqlite"_s);
    EXPECT_EQ(runSecond({u"--backup"_s, copy}).exitCode, 0);
    EXPECT_EQ(OtherConnection(copy).contents(), OtherConnection(secondStore()).contents());
    EXPECT_FALSE(isSecondOnBus());
    EXPECT_EQ(settings().parameter, u"COM1, 9600"_s);
}

TEST_F(NamedEngine, isNotRunUnderAWrongName)
{
    for (const char *const wrong : {"Second", "", "2nd", "../second", "a-b"}) {
        for (const QStringList &arguments : {QStringList(), QStringList{u"--status"_s}}) {
            const Ended refused = run(QStringList{u"--name"_s, QLatin1String(wrong)} + arguments);
            EXPECT_EQ(refused.exitCode, 1) << wrong;
            EXPECT_EQ(refused.out, QString()) << wrong;
            EXPECT_TRUE(refused.err.contains("a name is 1 to 32 of a-z, 0-9 and _"_L1)) << wrong;
        }
    }
    EXPECT_FALSE(QFile::exists(folder()));
}

TEST_F(NamedEngine, endsWhereOneOfItsNameIsUpAndOnlyThere)
{
    start();
    startSecond();
    const Ended third = runSecond({});
    EXPECT_EQ(third.exitCode, 0);
    EXPECT_TRUE(third.err.contains("another engine of this user is up"_L1));
    EXPECT_EQ(m_second.state(), QProcess::Running);
    EXPECT_EQ(queueSizeOfSecond(), 0);
}

TEST_F(NamedEngine, waitsForOneOfItsNameThatIsEndingWhileTheUnnamedOneIsUp)
{
    start();
    ASSERT_TRUE(QDir().mkpath(secondFolder()));
    const QString file = secondFolder() + u"/engine.lock"_s;
    auto ending = FileLock::open(file);
    ASSERT_TRUE(ending && (*ending)->tryLock());
    m_second.start();
    ASSERT_TRUE(m_second.waitForStarted(hangMs));
    const auto hasLockOpen = [&] {
        const QDir handles(u"/proc/%1/fd"_s.arg(m_second.processId()));
        const QFileInfoList all = handles.entryInfoList(QDir::Files | QDir::System);
        return std::any_of(all.cbegin(), all.cend(),
                           [&](const QFileInfo &handle) { return handle.symLinkTarget() == file; });
    };
    ASSERT_TRUE(until([&] { return hasLockOpen() || m_second.state() == QProcess::NotRunning; }));
    EXPECT_FALSE(isSecondOnBus());
    ending->reset();
    ASSERT_TRUE(until([&] { return isSecondOnBus() || m_second.state() == QProcess::NotRunning; }));
    EXPECT_TRUE(isSecondOnBus());
}

TEST_F(NamedEngine, setsTheLogBesideItsStoreAsideBeforeItIsTooLarge)
{
    ASSERT_TRUE(QDir().mkpath(secondFolder()));
    const QString path = secondFolder() + u"/engine.log"_s;
    QFile log(path);
    ASSERT_TRUE(log.open(QIODevice::WriteOnly));
    ASSERT_TRUE(log.resize(EngineLog::maxFileSize));
    m_second.setProcessChannelMode(QProcess::SeparateChannels);
    m_second.setStandardErrorFile(path, QIODevice::Append);
    startSecond();
    stopSecond();
    EXPECT_EQ(QFileInfo(path + u".1"_s).size(), EngineLog::maxFileSize);
    EXPECT_LT(QFileInfo(path).size(), 1000);
}

TEST_F(NamedEngine, isRefusedTheDeviceThatTheUnnamedOneUsesUntilThatIsDoneWithIt)
{
    const RunningSimulator device;
    ASSERT_TRUE(device.isReady());
    start();
    startSecond();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    Listener listener(bus);
    Listener listenerOfSecond(bus, busName());
    call("ReportState");
    askSecond("ReportState");
    useDevice({}, device.link());
    call("StartEngine");
    ASSERT_TRUE(until([&] { return listener.has(u"DeviceInfo"_s); }));

    // By another name, too.
    useDevice(named(), QFileInfo(device.link()).canonicalFilePath());
    askSecond("AddSMS", {u"601"_s, u"two"_s, u"2024-05-01T12:00:00"_s});
    askSecond("StartEngine");
    ASSERT_TRUE(until([&] { return listenerOfSecond.has(u"WarningError -4"_s); }));
    const QString holder = u"TovekSMService (%1)"_s.arg(m_engine.processId());
    EXPECT_TRUE(listenerOfSecond.heard.filter(u"WarningError -4"_s).first().contains(holder))
        << listenerOfSecond.heard.join(u'\n').toStdString();
    EXPECT_FALSE(listenerOfSecond.has(u"DeviceInfo"_s));
    addSMS(u"600"_s, u"one"_s, u"2024-05-01T12:00:00"_s);
    ASSERT_TRUE(until([&] { return listener.has(u"SMSSent 600 one"_s); }));
    EXPECT_EQ(receivedBy(device), QStringList{u"600 one"_s});

    call("StopEngine");
    ASSERT_TRUE(until([&] { return listenerOfSecond.has(u"SMSSent 601 two"_s); }));
    EXPECT_EQ(receivedBy(device), (QStringList{u"600 one"_s, u"601 two"_s}));
}

/// With settings for all engines and, in some cases, for the second one alone.
class NamedEngineSettings : public NamedEngine
{
protected:
    NamedEngineSettings() { QDir().mkpath(QFileInfo(common()).path()); }
    ~NamedEngineSettings() override
    {
        QFile::remove(own());
        QFile::remove(common());
    }

    static QString common() { return EngineSettings::file(EngineName()); }
    static QString own() { return QFileInfo(common()).path() + u"/TovekSMService@second.ini"_s; }
    static void write(const QString &path, const QByteArray &text)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    /// What the second engine puts on the list where `first` stands on it already.
    static bool takesForAnother(const QString &first, const QString &second)
    {
        askSecond("AddOptOut", {first}, u"Messages1"_s);
        return askSecond("AddOptOut", {second}, u"Messages1"_s).arguments().value(0).toBool();
    }
};

TEST_F(NamedEngineSettings, areThoseOfAllEnginesWhereItHasNone)
{
    write(common(), "[OptOut]\nCountryPrefix=351\n");
    startSecond();
    EXPECT_FALSE(takesForAnother(u"+351912345678"_s, u"912345678"_s));
}

TEST_F(NamedEngineSettings, areItsOwnBeforeThoseOfAllEngines)
{
    write(common(), "[OptOut]\nCountryPrefix=351\n");
    write(own(), "[OptOut]\nCountryPrefix=44\n");
    startSecond();
    EXPECT_TRUE(takesForAnother(u"+351912345678"_s, u"912345678"_s));
    EXPECT_FALSE(takesForAnother(u"+447700900123"_s, u"7700900123"_s));
    stopSecond();
    // The same holds for what is done in its files.
    EXPECT_EQ(runSecond({u"--opt-out"_s, u"remove"_s, u"7700900123"_s}).exitCode, 0);
    EXPECT_FALSE(runSecond({u"--opt-out"_s, u"list"_s}).out.contains(u"7700900123"_s));
}

TEST_F(NamedEngineSettings, holdItsLevelOfTheLog)
{
    write(common(), "[Log]\nLevel=info\n");
    write(own(), "[Log]\nLevel=error\n");
    start();
    startSecond();
    // Each finds the one of its name there, which is no error.
    EXPECT_TRUE(run({}).err.contains("another engine"_L1));
    EXPECT_EQ(runSecond({}).err, QString());
}

} // namespace

} // namespace norvane
