#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/platform/FileLock.h"
#include "TovekSMService/store/OtherConnection.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class AdminQueries : public EngineProcess
{
protected:
    /// Writes an outcome as the engine keeps it; one of the past might be forgotten once it is up.
    static void keepOutcome(const QString &at, const QString &phone, const QString &text, int code,
                            const QString &reference)
    {
        OtherConnection(storeFile())
            .run(u"INSERT INTO outcome (message_id, delivery_date, phone, text, "
                 "code, network_reference, at, reported) "
                 "VALUES (1, '2026-01-01T00:00:00', '%1', '%2', %3, %4, '%5', 1)"_s.arg(phone, text)
                     .arg(code)
                     .arg(reference, at));
    }
    static void makeStore() { EXPECT_EQ(run({u"--status"_s}).exitCode, 0); }
    static void keepTwo()
    {
        makeStore();
        keepOutcome(u"2096-05-01T10:00:00"_s, u"+34600"_s, u"=a,b"_s, 1, u"7"_s);
        keepOutcome(u"2096-05-02T10:00:00"_s, u"601"_s, u"ñ"_s, -38, u"NULL"_s);
    }
    static Ended json() { return run({u"--status"_s, u"--json"_s}); }
    static QJsonObject parsed(const Ended &ended)
    {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(ended.out.toUtf8(), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << ended.out.toStdString();
        return document.object();
    }
    QString target() const { return m_folder.filePath(u"copy.sqlite"_s); }
    Ended backUp() const { return run({u"--backup"_s, target()}); }

    QTemporaryDir m_folder;
};

TEST_F(AdminQueries, theReportIsTextOrCsv)
{
    keepTwo();
    const Ended text = run({u"--report"_s});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_EQ(text.out, u"2096-05-01T10:00:00\t2026-01-01T00:00:00\t+34600\tsent\t1\t7\t=a,b\t\t\n"
                        "2096-05-02T10:00:00\t2026-01-01T00:00:00\t601\tfailed\t-38\t\tñ\t\t\n"_s);
    EXPECT_EQ(run({u"--report"_s, u"--format"_s, u"text"_s}).out, text.out);
    const Ended csv = run({u"--report"_s, u"--format"_s, u"csv"_s});
    EXPECT_EQ(csv.exitCode, 0);
    EXPECT_EQ(csv.out, u"at,delivery date,phone,outcome,code,reference,message,delivery,"
                       "delivered at\r\n"
                       "2096-05-01T10:00:00,2026-01-01T00:00:00,+34600,sent,1,7,\"'=a,b\",,\r\n"
                       "2096-05-02T10:00:00,2026-01-01T00:00:00,601,failed,-38,,ñ,,\r\n"_s);
}

TEST_F(AdminQueries, theReportBeginsWhereItIsTold)
{
    keepTwo();
    const struct
    {
        const char *since;
        int lines;
    } cases[] = {{"2096-05-01", 2},
                 {"2096-05-01T10:00:00", 2},
                 {"2096-05-01T10:00:01", 1},
                 {"2096-05-02", 1},
                 {"2096-05-03", 0}};
    for (const auto &one : cases) {
        const Ended ended = run({u"--report"_s, u"--since"_s, QLatin1String(one.since)});
        EXPECT_EQ(ended.exitCode, 0) << one.since;
        EXPECT_EQ(ended.out.count(u'\n'), one.lines) << one.since;
    }
}

TEST_F(AdminQueries, theReportIsThereWhileTheEngineWorks)
{
    keepTwo();
    start();
    const Ended ended = run({u"--report"_s});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out.count(u'\n'), 2);
}

TEST_F(AdminQueries, withoutAStoreThereIsNoReportAndNoneIsMade)
{
    const Ended ended = run({u"--report"_s});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.err.contains("no store yet"_L1));
    EXPECT_FALSE(QFile::exists(folder()));
}

TEST_F(AdminQueries, whatDoesNotGoTogetherIsRefused)
{
    const QList<QStringList> wrong = {
        {u"--report"_s, u"--since"_s, u"yesterday"_s},
        {u"--report"_s, u"--format"_s, u"xml"_s},
        {u"--since"_s, u"2026-01-01"_s},
        {u"--format"_s, u"csv"_s},
        {u"--json"_s},
        {u"--status"_s, u"--json"_s, u"--queue"_s},
        {u"--report"_s, u"--queue"_s},
        {u"--report"_s, u"--status"_s},
        {u"--log-level"_s, u"loud"_s},
        {u"--backup"_s},
    };
    for (const QStringList &arguments : wrong) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.exitCode, 1) << arguments.join(u' ').toStdString();
        EXPECT_FALSE(ended.err.isEmpty()) << arguments.join(u' ').toStdString();
        EXPECT_EQ(ended.out, QString());
    }
}

TEST_F(AdminQueries, aMonitorSeesAnEngineThatIsNotUp)
{
    makeStore();
    const Ended ended = json();
    EXPECT_EQ(ended.exitCode, 2);
    const QJsonObject report = parsed(ended);
    EXPECT_EQ(report.value(u"engine"_s), u"not up"_s);
    EXPECT_EQ(report.value(u"toRun"_s), false);
    EXPECT_EQ(report.value(u"queue"_s), 0);
    EXPECT_TRUE(report.value(u"oldestDue"_s).isNull());
    EXPECT_FALSE(isOnBus());
}

TEST_F(AdminQueries, aMonitorSeesAStoppedEngineWithItsQueueAndItsLastFailure)
{
    keepTwo();
    start();
    addSMS(u"600"_s, u"secret"_s, u"2100-01-02T00:00:00"_s);
    addSMS(u"600"_s, u"secret"_s, u"2100-01-01T00:00:00"_s);
    setSettings({0, u"47119"_s, 1, 1, u"COM2, 9600"_s});
    const Ended ended = json();
    EXPECT_EQ(ended.exitCode, 1);
    const QJsonObject report = parsed(ended);
    EXPECT_EQ(report.value(u"engine"_s), u"stopped"_s);
    EXPECT_EQ(report.value(u"queue"_s), 2);
    EXPECT_EQ(report.value(u"oldestDue"_s), u"2100-01-01T00:00:00"_s);
    EXPECT_EQ(report.value(u"device"_s).toObject().value(u"parameter"_s), u"COM2, 9600"_s);
    EXPECT_EQ(report.value(u"lastFailed"_s).toObject(),
              (QJsonObject{{u"code"_s, -38}, {u"at"_s, u"2096-05-02T10:00:00"_s}}));
    EXPECT_FALSE(ended.out.contains("secret"_L1));
    EXPECT_FALSE(ended.out.contains("47119"_L1));
}

TEST_F(AdminQueries, aMonitorSeesTroubleWithTheDevice)
{
    start();
    setSettings(noDevice());
    call("StartEngine");
    ASSERT_TRUE(until([] { return json().exitCode == 3; }));
    const QJsonObject report = parsed(json());
    EXPECT_EQ(report.value(u"engine"_s), u"running"_s);
    EXPECT_EQ(report.value(u"trouble"_s).toArray().size(), 1);
    const QJsonObject error = report.value(u"lastError"_s).toObject();
    EXPECT_EQ(error.value(u"code"_s), -2);
    EXPECT_TRUE(error.value(u"text"_s).toString().contains("/no/such/device"_L1));
    EXPECT_EQ(error.value(u"at"_s).toString().size(), 19);
}

TEST_F(AdminQueries, anEngineThatCannotBeReachedIsTrouble)
{
    makeStore();
    const auto lock = FileLock::open(folder() + u"/engine.lock"_s);
    ASSERT_TRUE(lock && (*lock)->tryLock());
    const Ended ended = json();
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_EQ(parsed(ended).value(u"engine"_s), u"unknown"_s);
}

TEST_F(AdminQueries, aMonitorAttachesNobody)
{
    start();
    setSettings(noDevice());
    call("StartEngine");
    ASSERT_TRUE(until([] { return json().exitCode == 3; }));
    // The warning is still there for the first console.
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    EXPECT_TRUE(until([&] { return listener.has(u"WarningError -2"_s); }));
}

TEST_F(AdminQueries, aBackupHoldsEverythingForItsOwnerAlone)
{
    start();
    for (int number = 0; number < 50; ++number)
        addSMS(QString::number(number), u"text"_s, QString());
    const Ended ended = backUp();
    EXPECT_EQ(ended.exitCode, 0) << ended.err.toStdString();
    struct stat info = {};
    ASSERT_EQ(::stat(QFile::encodeName(target()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
    OtherConnection copy(target());
    EXPECT_EQ(copy.value(u"PRAGMA integrity_check"_s), u"ok"_s);
    EXPECT_EQ(copy.contents(), OtherConnection(storeFile()).contents());
    EXPECT_EQ(copy.value(u"PRAGMA user_version"_s),
              OtherConnection(storeFile()).value(u"PRAGMA user_version"_s));
    EXPECT_EQ(callForNumber("GetQueueSize"), 50);
}

TEST_F(AdminQueries, aBackupTakesNothingsPlace)
{
    makeStore();
    QFile other(target());
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    other.close();
    const Ended refused = backUp();
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(target()));
    EXPECT_EQ(QFileInfo(target()).size(), 0);
    // Nor that of what a link leads to.
    const QString link = m_folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(m_folder.filePath(u"nowhere"_s), link));
    EXPECT_EQ(run({u"--backup"_s, link}).exitCode, 1);
    EXPECT_FALSE(QFile::exists(m_folder.filePath(u"nowhere"_s)));
}

TEST_F(AdminQueries, noBackupIsMadeOfNothingOrToNowhere)
{
    EXPECT_EQ(backUp().exitCode, 1);
    EXPECT_FALSE(QFile::exists(target()));
    makeStore();
    const Ended nowhere = run({u"--backup"_s, u"/no/such/folder/x"_s});
    EXPECT_EQ(nowhere.exitCode, 1);
    EXPECT_TRUE(nowhere.err.contains("/no/such/folder/x"_L1));
}

TEST_F(AdminQueries, aDamagedStoreLeavesNoHalfBackup)
{
    makeStore();
    QFile store(storeFile());
    ASSERT_TRUE(store.open(QIODevice::ReadWrite));
    ASSERT_TRUE(store.seek(4096));
    store.write(QByteArray(static_cast<int>(store.size()) - 4096, 'x'));
    store.close();
    EXPECT_EQ(backUp().exitCode, 1);
    EXPECT_FALSE(QFile::exists(target()));
}

} // namespace

} // namespace norvane
