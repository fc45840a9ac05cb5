#include "TovekSMService/host/SharedEngines.h"
#include "support/PostgresProxy.h"

#include <QDBusPendingCall>
#include <QFile>

namespace norvane {

namespace {

/// Lets the queue of the unnamed engine be moved, and kills that when the time is over. It fails
/// while the server is still busy with what one that was killed had asked of it.
/// @return whether it was done
bool moves(const QString &target, int ms)
{
    QProcess moving;
    moving.setProcessChannelMode(QProcess::ForwardedChannels);
    moving.start(SharingEngine::program(), {u"--move-queue"_s, target});
    if (moving.waitForFinished(ms))
        return moving.exitStatus() == QProcess::NormalExit && moving.exitCode() == 0;
    moving.kill();
    moving.waitForFinished(hangMs);
    return false;
}

QVariantList firstPage()
{
    return {QString(), QString(), QString(), 63U, QString(), QString(), 0U};
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
    QFile::setPermissions(m_first->settingsFile(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
    const Ended refused = m_first->run({u"--engines"_s});
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_TRUE(refused.err.contains(u"can be read or written by others"_s));
    m_first->start();
    EXPECT_TRUE(m_first->hears(u"WarningError -57"_s));
    m_first->stop();
    QFile::setPermissions(m_first->settingsFile(), QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_EQ(m_first->run({u"--engines"_s}).exitCode, 0);
}

TEST_F(SharedEngines, doNotReadTheHistoryByAPasswordThatOthersCanRead)
{
    makeBoth();
    PostgresProxy proxy(server().socketPath());
    m_first->writeSettings(proxy.address() + u' ' + PostgresServer::login(u"shared"_s) +
                           u" password=secret"_s);
    const QString settings = m_first->settingsFile();
    QFile::setPermissions(settings, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
    m_first->start();
    const QDBusMessage refused = m_first->ask("GetHistory", firstPage());
    EXPECT_EQ(refused.errorName(), u"com.tovek.SMService.Error.Store"_s);
    EXPECT_TRUE(refused.errorMessage().contains(u"can be read or written by others"_s));
    EXPECT_EQ(proxy.connections(), 0);
    m_first->stop();
    QFile::setPermissions(settings, QFile::ReadOwner | QFile::WriteOwner);
    m_first->start();
    EXPECT_EQ(m_first->ask("GetHistory", firstPage()).type(), QDBusMessage::ReplyMessage);
    EXPECT_GE(proxy.connections(), 1);
}

TEST_F(SharedEngines, endWhileTheirDatabaseIsSilent)
{
    makeBoth();
    PostgresProxy proxy(server().socketPath());
    proxy.hold();
    // A server of many addresses, each of which takes its seconds.
    const QStringList address = proxy.address().split(u' ');
    const QStringList hosts(1000, address.constFirst().section(u'=', 1));
    m_first->writeSettings(u"host="_s + hosts.join(u',') + u' ' + address.constLast() + u' ' +
                           PostgresServer::login(u"shared"_s));
    m_first->start();
    QDBusConnection::sessionBus().asyncCall(m_first->question("GetHistory", firstPage()));
    m_first->call("ReportState");
    // The queue's and the history's.
    ASSERT_TRUE(waitUntil([&proxy] { return proxy.connections() >= 2; }));
    m_first->stop();
}

TEST_F(SharedEngines, workByARoleThatMayDoNothingButThat)
{
    makeBoth();
    m_second->start(); // makes the tables
    ASSERT_TRUE(eventually(u"SELECT to_regclass('engine') IS NOT NULL"_s, u"t"_s));
    m_first->writeSettings(makeLeastRole());
    m_first->start();
    EXPECT_EQ(m_first->add(u"m"_s).type(), QDBusMessage::ReplyMessage);
    m_first->call("StartEngine");
    EXPECT_TRUE(eventually(outcomes(), u"1x1"_s));
    m_first->call("ClearQueue");
    EXPECT_EQ(m_first->run({u"--opt-out"_s, u"add"_s, u"600"_s}).exitCode, 0);
    EXPECT_EQ(m_first->run({u"--engines"_s}).out.count(u'\n'), 2);
    m_first.reset();
    dropLeastRole();
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
        QFile::setPermissions(m_first->settingsFile(), QFile::ReadOwner | QFile::WriteOwner);
        EXPECT_EQ(m_first->run({u"--engines"_s}).exitCode == 0, isRight);
    }
}

TEST_F(SharedEngines, moveTheirQueueIntoTheDatabaseAndBackOnceEachWhateverInterruptsIt)
{
    makeBoth();
    QFile::remove(m_first->settingsFile());
    constexpr int messages = 4000;
    {
        // The file's queue: with no database in the settings.
        QFile file(m_first->settingsFile());
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
        // Killed earlier and later, until it has had the time that it needs.
        for (int ms = 20; !moves(target, ms); ms *= 2)
            ASSERT_LT(ms, hangMs);
        const bool isFile = target == "file"_L1;
        EXPECT_EQ(value(u"SELECT count(DISTINCT text) || ' ' || count(*) FROM message"_s),
                  isFile ? u"0 0"_s : u"4000 4000"_s);
        EXPECT_EQ(value(u"SELECT count(*) FROM moved_out"_s), u"0"_s);
        EXPECT_EQ(value(u"SELECT sum(queued) FROM engine"_s), isFile ? u"0"_s : u"4000"_s);
    }
}

} // namespace

} // namespace norvane
