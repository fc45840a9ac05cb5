#include "TovekSMService/host/EngineProcess.h"
#include "gsm-simulator/RunningSimulator.h"
#include "support/PostgresServer.h"

#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <csignal>
#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

PostgresServer &server()
{
    static PostgresServer one(PostgresServer::Durability::Unflushed,
                              PostgresServer::Listen::SocketAndLoopback);
    return one;
}

QString settingsFile(const QString &engine)
{
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane"_s;
    QDir().mkpath(folder);
    return folder +
           (engine.isEmpty() ? u"/TovekSMService.ini"_s : u"/TovekSMService@%1.ini"_s.arg(engine));
}

/// Hears the events of one engine, as "Name argument argument".
class EngineListener : public QObject
{
    Q_OBJECT

public:
    explicit EngineListener(const QString &busName)
    {
        QDBusConnection::sessionBus().connect(busName, u"/com/tovek/SMService"_s,
                                              u"com.tovek.SMService.SMSManager1"_s, QString(), this,
                                              SLOT(hear(QDBusMessage)));
    }

    QStringList heard;

private Q_SLOTS:
    void hear(const QDBusMessage &event)
    {
        QStringList words = {event.member()};
        for (const QVariant &argument : event.arguments())
            words << argument.toString();
        heard << words.join(u' ');
    }
};

/// One of the engines that share the queue: its program, with a simulated device.
class SharingEngine
{
public:
    /// @param name  of the engine of its user; empty for the unnamed one
    SharingEngine(const QString &name, const QString &database, const QStringList &simulator,
                  const QByteArray &more = {})
        : m_name(name), m_device(simulator), m_listener(busName())
    {
        writeSettings(database, more);
        EXPECT_EQ(run({u"--device"_s, m_device.link() + u", 115200"_s}).exitCode, 0);
    }
    ~SharingEngine()
    {
        resume();
        m_process.kill();
        m_process.waitForFinished(hangMs);
        EXPECT_TRUE(waitUntil([this] { return !isUp(); }));
        QFile::remove(settingsFile(m_name));
    }

    void writeSettings(const QString &database, const QByteArray &more = {}) const
    {
        QFile file(settingsFile(m_name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Queue]\nDatabase=" + database.toUtf8() + "\nName=" + label().toUtf8() + '\n' +
                   more + "\n[Reports]\nDelivery=false\n");
    }
    QString label() const { return m_name.isEmpty() ? u"first"_s : m_name; }
    QString busName() const
    {
        return m_name.isEmpty() ? u"com.tovek.SMService"_s : u"com.tovek.SMService."_s + m_name;
    }
    bool isUp() const
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(busName());
    }

    void start()
    {
        m_process.setProgram(program());
        m_process.setArguments(arguments());
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start();
        ASSERT_TRUE(m_process.waitForStarted(hangMs));
        ASSERT_TRUE(waitUntil([this] { return isUp(); }));
        call("ReportState");
    }
    void kill()
    {
        m_process.kill();
        ASSERT_TRUE(m_process.waitForFinished(hangMs));
        ASSERT_TRUE(waitUntil([this] { return !isUp(); }));
    }
    void stop()
    {
        m_process.terminate();
        ASSERT_TRUE(m_process.waitForFinished(hangMs));
        ASSERT_TRUE(waitUntil([this] { return !isUp(); }));
    }
    void suspend() { ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP); }
    void resume()
    {
        if (m_process.state() == QProcess::Running)
            ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT);
    }

    QDBusMessage call(const char *operation, const QVariantList &arguments = {}) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(busName(), u"/com/tovek/SMService"_s,
                                                              u"com.tovek.SMService.SMSManager1"_s,
                                                              QLatin1String(operation));
        message.setArguments(arguments);
        message.setAutoStartService(false);
        return QDBusConnection::sessionBus().call(message, QDBus::BlockWithGui, hangMs);
    }
    int queueSize() const { return call("GetQueueSize").arguments().value(0).toInt(); }
    QDBusMessage add(const QString &text) const
    {
        return call("AddSMS", {u"600111222"_s, text, u"2020-01-01T00:00:00"_s});
    }
    void addMany(int messages, const QString &prefix) const
    {
        for (int number = 0; number < messages; ++number)
            EXPECT_EQ(add(prefix + QString::number(number)).type(), QDBusMessage::ReplyMessage);
    }
    Ended run(const QStringList &options) const
    {
        QProcess process;
        process.start(program(), arguments() + options);
        EXPECT_TRUE(process.waitForFinished(hangMs));
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    QStringList received() const
    {
        QStringList texts;
        for (const QJsonObject &message : m_device.messages())
            texts << message[u"text"_s].toString();
        return texts;
    }
    bool isSubmitting() const
    {
        return ControlClient(m_device.controlPath()).ask("count submitting").endsWith("1");
    }
    bool hears(const QString &event)
    {
        return waitUntil([&] {
            return std::any_of(m_listener.heard.cbegin(), m_listener.heard.cend(),
                               [&](const QString &heard) { return heard.startsWith(event); });
        });
    }
    const QStringList &heard() const { return m_listener.heard; }
    QStringList arguments() const
    {
        return m_name.isEmpty() ? QStringList() : QStringList{u"--name"_s, m_name};
    }
    static QString program() { return QStringLiteral(NORVANE_BIN_DIR "/TovekSMService"); }

private:
    const QString m_name;
    RunningSimulator m_device;
    EngineListener m_listener;
    QProcess m_process;
};

class SharedEngines : public testing::Test
{
protected:
    SharedEngines() : m_conninfo(server().freshDatabase(u"shared"_s))
    {
        qDBusRegisterMetaType<WireEntry>();
        qDBusRegisterMetaType<QList<WireEntry>>();
        qDBusRegisterMetaType<WireRow>();
        qDBusRegisterMetaType<QList<WireRow>>();
    }
    ~SharedEngines() override
    {
        m_first.reset();
        m_second.reset();
        if (!server().isRunning())
            server().start();
        QDir(qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService"_s).removeRecursively();
    }

    void makeBoth(const QStringList &simulator = {}, const QByteArray &more = {})
    {
        m_first = std::make_unique<SharingEngine>(QString(), m_conninfo, simulator, more);
        m_second = std::make_unique<SharingEngine>(u"second"_s, m_conninfo, simulator, more);
    }
    static QString value(const QString &query)
    {
        const PostgresServer::Rows rows = server().sql(query, u"shared"_s);
        return rows.isEmpty() ? QString() : rows.constFirst().constFirst();
    }
    static bool eventually(const QString &query, const QString &expected)
    {
        return waitUntil([&] { return value(query) == expected; });
    }
    /// Lets an engine look as if it had been silent for long enough.
    static void silence(const QString &engine)
    {
        server().sql(
            u"UPDATE engine SET seen = seen - interval '31 s' WHERE name = '%1'"_s.arg(engine),
            u"shared"_s);
    }
    /// Starts both, and lets the second one begin to send a message.
    void startBothAndSubmitBySecond()
    {
        m_first->start();
        m_second->start();
        submitBySecond();
    }
    void submitBySecond()
    {
        EXPECT_EQ(m_second->add(u"held"_s).type(), QDBusMessage::ReplyMessage);
        m_second->call("StartEngine");
        ASSERT_TRUE(waitUntil([this] { return m_second->isSubmitting(); }));
    }
    /// Lets the second engine begin to send a message, and stand still in the middle.
    void sendAndSuspendSecond()
    {
        m_second->start();
        ASSERT_NO_FATAL_FAILURE(submitBySecond());
        m_second->suspend();
    }

    QString m_conninfo;
    std::unique_ptr<SharingEngine> m_first;
    std::unique_ptr<SharingEngine> m_second;
};

QString outcomes()
{
    return u"SELECT string_agg(code || 'x' || n, ' ' ORDER BY code) FROM "
           "(SELECT code, count(*) AS n FROM outcome GROUP BY code) each"_s;
}

TEST_F(SharedEngines, sendOneQueueTogetherAndEachMessageOnce)
{
    makeBoth({u"--latency"_s, u"5"_s});
    m_first->start();
    m_second->start();
    m_first->addMany(40, u"m"_s);
    m_first->call("StartEngine");
    m_second->call("StartEngine");
    ASSERT_TRUE(eventually(outcomes(), u"1x40"_s));
    QStringList all = m_first->received() + m_second->received();
    EXPECT_EQ(all.size(), 40);
    all.removeDuplicates();
    EXPECT_EQ(all.size(), 40);
    EXPECT_FALSE(m_first->received().isEmpty());
    EXPECT_FALSE(m_second->received().isEmpty());
    EXPECT_TRUE(waitUntil([this] { return m_first->queueSize() == 0; }));
    EXPECT_TRUE(waitUntil([this] { return m_second->queueSize() == 0; }));
}

TEST_F(SharedEngines, tellTheirConsolesWhatChangedAnywhere)
{
    makeBoth();
    m_first->start();
    m_second->start();
    m_first->addMany(3, u"m"_s);
    EXPECT_TRUE(m_second->hears(u"SMSQueueChanged 3"_s));
    EXPECT_EQ(m_second->run({u"--queue"_s}).out.count(u'\n'), 3);
    m_second->call("ClearQueue");
    EXPECT_TRUE(m_first->hears(u"SMSQueueChanged 0"_s));
}

TEST_F(SharedEngines, tellThatAnEditCameTooLateWhileAnotherOneSends)
{
    makeBoth({u"--latency"_s, u"2000"_s});
    ASSERT_NO_FATAL_FAILURE(startBothAndSubmitBySecond());
    const qlonglong id = value(u"SELECT id FROM message"_s).toLongLong();
    m_first->call("UpdateQueue", {QVariant::fromValue(QList<WireRow>()),
                                  QVariant::fromValue(QList<qlonglong>{id})});
    EXPECT_TRUE(m_first->hears(u"WarningError -9"_s));
    EXPECT_TRUE(eventually(outcomes(), u"1x1"_s));
}

TEST_F(SharedEngines, leaveToTheOthersWhatTheirDeviceFailsFor)
{
    m_first = std::make_unique<SharingEngine>(QString(), m_conninfo, QStringList());
    m_second = std::make_unique<SharingEngine>(
        u"second"_s, m_conninfo,
        QStringList{u"--fail-every"_s, u"1"_s, u"--fail-code"_s, u"310"_s});
    m_first->start();
    m_second->start();
    m_second->call("StartEngine");
    m_first->addMany(5, u"m"_s);
    EXPECT_TRUE(m_second->hears(u"WarningError"_s));
    m_first->call("StartEngine");
    EXPECT_TRUE(eventually(outcomes(), u"1x5"_s));
    EXPECT_EQ(m_first->received().size(), 5);
}

TEST_F(SharedEngines, reportWhatAKilledOneLeftInTheMiddle)
{
    makeBoth({u"--latency"_s, u"600000"_s});
    ASSERT_NO_FATAL_FAILURE(startBothAndSubmitBySecond());
    m_second->kill();
    silence(u"second"_s);
    EXPECT_TRUE(m_first->hears(u"SMSSentFailed 600111222 held -39"_s));
    EXPECT_TRUE(m_first->hears(u"WarningError -39"_s));
    EXPECT_EQ(value(outcomes()), u"-39x1"_s);
    EXPECT_TRUE(waitUntil([this] { return m_first->queueSize() == 0; }));
}

TEST_F(SharedEngines, correctWhatWasReportedWhenTheDeviceHasTakenIt)
{
    makeBoth({u"--latency"_s, u"1500"_s});
    m_first->start();
    sendAndSuspendSecond();
    silence(u"second"_s);
    EXPECT_TRUE(m_first->hears(u"SMSSentFailed 600111222 held -39"_s));
    m_second->resume();
    EXPECT_TRUE(m_second->hears(u"SMSSent 600111222 held"_s));
    EXPECT_EQ(value(outcomes()), u"1x1"_s);
    EXPECT_EQ(m_second->received(), QStringList{u"held"_s});
    // It goes on in a new epoch.
    EXPECT_EQ(m_first->add(u"next"_s).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(eventually(outcomes(), u"1x2"_s));
}

TEST_F(SharedEngines, comeUpWithoutTheDatabaseAndSendWhenItIsThere)
{
    makeBoth();
    ASSERT_TRUE(server().stop());
    m_first->start();
    m_first->call("StartEngine");
    const QDBusMessage refused = m_first->add(u"lost"_s);
    EXPECT_EQ(refused.type(), QDBusMessage::ErrorMessage);
    EXPECT_TRUE(m_first->hears(u"WarningError -57"_s));
    ASSERT_TRUE(server().start());
    ASSERT_TRUE(
        waitUntil([this] { return m_first->add(u"kept"_s).type() == QDBusMessage::ReplyMessage; }));
    EXPECT_TRUE(eventually(outcomes(), u"1x1"_s));
    EXPECT_EQ(m_first->received(), QStringList{u"kept"_s});
}

TEST_F(SharedEngines, handOverWhatTheDeviceTookWhileTheDatabaseWasAway)
{
    makeBoth({u"--latency"_s, u"1500"_s});
    m_first->start();
    EXPECT_EQ(m_first->add(u"held"_s).type(), QDBusMessage::ReplyMessage);
    m_first->call("StartEngine");
    ASSERT_TRUE(waitUntil([this] { return m_first->isSubmitting(); }));
    ASSERT_TRUE(server().killNow());
    ASSERT_TRUE(waitUntil([this] { return !m_first->received().isEmpty(); }));
    ASSERT_TRUE(server().start());
    EXPECT_TRUE(m_first->hears(u"SMSSent 600111222 held 0"_s));
    EXPECT_EQ(value(outcomes()), u"1x1"_s);
}

TEST_F(SharedEngines, keepItAtHomeUntilThenWhateverEndsThem)
{
    makeBoth({u"--latency"_s, u"1500"_s});
    m_first->start();
    EXPECT_EQ(m_first->add(u"held"_s).type(), QDBusMessage::ReplyMessage);
    m_first->call("StartEngine");
    ASSERT_TRUE(waitUntil([this] { return m_first->isSubmitting(); }));
    ASSERT_TRUE(server().killNow());
    const QString store = qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService/queue.sqlite"_s;
    const auto kept = [&] {
        return QProcess::execute(u"sh"_s, {u"-c"_s, u"grep -aq held '%1' '%1-wal'"_s.arg(store)});
    };
    ASSERT_TRUE(waitUntil([&] { return kept() == 0; }));
    m_first->kill();
    ASSERT_TRUE(server().start());
    m_first->start();
    EXPECT_TRUE(eventually(outcomes(), u"1x1"_s));
    EXPECT_EQ(m_first->received(), QStringList{u"held"_s});
    EXPECT_EQ(value(u"SELECT count(*) FROM message"_s), u"0"_s);
}

TEST_F(SharedEngines, beginNothingWhileTheClocksDiffer)
{
    makeBoth();
    server().sql(u"ALTER DATABASE shared SET timezone = 'Pacific/Kiritimati'"_s);
    m_first->start();
    EXPECT_TRUE(m_first->hears(u"WarningError -1 this computer's clock"_s));
    EXPECT_EQ(m_first->add(u"later"_s).type(), QDBusMessage::ReplyMessage);
    m_first->call("StartEngine");
    EXPECT_TRUE(m_first->run({u"--status"_s}).out.contains(u"clock or time zone"_s));
    server().sql(u"ALTER DATABASE shared RESET timezone"_s);
    EXPECT_TRUE(m_first->received().isEmpty());
    server().sql(u"SELECT pg_terminate_backend(pid) FROM pg_stat_activity "
                 "WHERE datname = 'shared'"_s);
    EXPECT_TRUE(eventually(outcomes(), u"1x1"_s));
}

TEST_F(SharedEngines, areListedAndGivenUpByTheCommandLine)
{
    makeBoth({u"--latency"_s, u"600000"_s});
    ASSERT_NO_FATAL_FAILURE(startBothAndSubmitBySecond());
    m_second->kill();
    const Ended listed = m_first->run({u"--engines"_s});
    EXPECT_EQ(listed.exitCode, 0);
    const QStringList lines = listed.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.at(0).startsWith(u"first\t"_s));
    EXPECT_EQ(lines.at(0).split(u'\t').size(), 6);
    const Ended retired = m_first->run({u"--retire"_s, u"second"_s});
    EXPECT_EQ(retired.exitCode, 0) << retired.err.toStdString();
    EXPECT_TRUE(retired.out.contains(u"600111222\theld"_s));
    EXPECT_EQ(value(outcomes()), u"-39x1"_s);
    EXPECT_TRUE(m_first->run({u"--engines"_s}).out.contains(u"retired"_s));
    EXPECT_NE(m_first->run({u"--retire"_s, u"nobody"_s}).exitCode, 0);
}

TEST_F(SharedEngines, listWhatBecameOfTheMessagesOfAll)
{
    makeBoth();
    m_first->start();
    m_second->start();
    m_first->addMany(2, u"m"_s);
    m_second->call("StartEngine");
    ASSERT_TRUE(eventually(outcomes(), u"1x2"_s));
    const QString report = m_first->run({u"--report"_s}).out;
    EXPECT_EQ(report.count(u"sent"_s), 2) << report.toStdString();
}

TEST_F(SharedEngines, doNotUseAPasswordThatOthersCanRead)
{
    makeBoth();
    m_first->writeSettings(m_conninfo + u" password=secret"_s);
    QFile::setPermissions(settingsFile({}),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
    const Ended refused = m_first->run({u"--engines"_s});
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_TRUE(refused.err.contains(u"can be read or written by others"_s));
    m_first->start();
    EXPECT_TRUE(m_first->hears(u"WarningError -57"_s));
    m_first->stop();
    QFile::setPermissions(settingsFile({}), QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_EQ(m_first->run({u"--engines"_s}).exitCode, 0);
}

TEST_F(SharedEngines, workByARoleThatMayDoNothingButThat)
{
    makeBoth();
    m_second->start(); // makes the tables
    ASSERT_TRUE(eventually(u"SELECT to_regclass('engine') IS NOT NULL"_s, u"t"_s));
    for (
        const QString &statement :
        {u"DROP ROLE IF EXISTS norvane_engine"_s, u"CREATE ROLE norvane_engine LOGIN"_s,
         u"REVOKE ALL ON DATABASE shared FROM PUBLIC"_s,
         u"GRANT CONNECT ON DATABASE shared TO norvane_engine"_s,
         u"GRANT USAGE ON SCHEMA public TO norvane_engine"_s,
         u"GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES IN SCHEMA public TO norvane_engine"_s})
        server().sql(statement, u"shared"_s);
    m_first->writeSettings(
        QString(m_conninfo).replace(u"user=norvane"_s, u"user=norvane_engine"_s));
    m_first->start();
    EXPECT_EQ(m_first->add(u"m"_s).type(), QDBusMessage::ReplyMessage);
    m_first->call("StartEngine");
    EXPECT_TRUE(eventually(outcomes(), u"1x1"_s));
    m_first->call("ClearQueue");
    EXPECT_EQ(m_first->run({u"--opt-out"_s, u"add"_s, u"600"_s}).exitCode, 0);
    EXPECT_EQ(m_first->run({u"--engines"_s}).out.count(u'\n'), 2);
    m_first.reset();
    server().sql(u"DROP OWNED BY norvane_engine"_s, u"shared"_s);
    server().sql(u"DROP ROLE norvane_engine"_s, u"shared"_s);
}

TEST_F(SharedEngines, takeNoServerForTheirsThatCannotProveIt)
{
    makeBoth();
    const QString certificate = server().setUpTls();
    ASSERT_TRUE(server().restart());
    server().sql(u"ALTER ROLE norvane PASSWORD 'secret'"_s);
    const QString login = server().loopbackConnection(u"shared"_s) +
                          u" user=norvane password=secret sslmode=verify-full sslrootcert="_s;
    QFile other(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/other.crt"_s);
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    other.close();
    for (const bool isRight : {true, false}) {
        m_first->writeSettings(login + (isRight ? certificate : other.fileName()));
        QFile::setPermissions(settingsFile({}), QFile::ReadOwner | QFile::WriteOwner);
        EXPECT_EQ(m_first->run({u"--engines"_s}).exitCode == 0, isRight);
    }
}

TEST_F(SharedEngines, moveTheirQueueIntoTheDatabaseAndBackOnceEachWhateverInterruptsIt)
{
    makeBoth();
    QFile::remove(settingsFile({}));
    constexpr int messages = 4000;
    {
        // The file's queue: with no database in the settings.
        QFile file(settingsFile({}));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    m_first->start();
    QList<WireEntry> list;
    for (int number = 0; number < messages; ++number)
        list.append({u"600111222"_s, u"m"_s + QString::number(number)});
    EXPECT_EQ(
        m_first->call("AddSMSList", {QVariant::fromValue(list), u"2999-01-01T00:00:00"_s}).type(),
        QDBusMessage::ReplyMessage);
    EXPECT_EQ(m_first->queueSize(), messages);
    m_first->writeSettings(m_conninfo);
    EXPECT_NE(m_first->run({u"--move-queue"_s, u"database"_s}).exitCode, 0) << "it is up";
    m_first->stop();

    for (const QString &target : {u"database"_s, u"file"_s, u"database"_s}) {
        for (int delay = 1;; delay *= 2) {
            QProcess moving;
            moving.setProcessChannelMode(QProcess::ForwardedChannels);
            moving.start(SharingEngine::program(), {u"--move-queue"_s, target});
            ASSERT_TRUE(moving.waitForStarted(hangMs));
            // Killed earlier and later, until it has had the time that it needs.
            if (moving.waitForFinished(delay * 20))
                break;
            moving.kill();
            ASSERT_TRUE(moving.waitForFinished(hangMs));
        }
        const bool isFile = target == "file"_L1;
        EXPECT_EQ(value(u"SELECT count(DISTINCT text) || ' ' || count(*) FROM message"_s),
                  isFile ? u"0 0"_s : u"4000 4000"_s);
        EXPECT_EQ(value(u"SELECT count(*) FROM moved_out"_s), u"0"_s);
        EXPECT_EQ(value(u"SELECT sum(queued) FROM engine"_s), isFile ? u"0"_s : u"4000"_s);
    }
}

} // namespace

} // namespace norvane

#include "SharedEnginesTest.moc"
