#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/platform/FileLock.h"
#include "TovekSMService/store/OtherConnection.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace {

class AdminQueries : public EngineProcess
{
protected:
    /// Writes an outcome as the engine keeps it; one of the past might be forgotten once it is up.
    static void keepOutcome(const QString &at, const QString &phone, const QString &text, int code,
                            const QString &reference)
    {
        OtherConnection(storeFile())
            .run(QStringLiteral("INSERT INTO outcome (message_id, delivery_date, phone, text, "
                                "code, network_reference, at, reported) "
                                "VALUES (1, '2026-01-01T00:00:00', '%1', '%2', %3, %4, '%5', 1)")
                     .arg(phone, text)
                     .arg(code)
                     .arg(reference, at));
    }
    static void makeStore() { EXPECT_EQ(run({QStringLiteral("--status")}).exitCode, 0); }
    static void keepTwo()
    {
        makeStore();
        keepOutcome(QStringLiteral("2096-05-01T10:00:00"), QStringLiteral("+34600"),
                    QStringLiteral("=a,b"), 1, QStringLiteral("7"));
        keepOutcome(QStringLiteral("2096-05-02T10:00:00"), QStringLiteral("601"),
                    QStringLiteral("ñ"), -38, QStringLiteral("NULL"));
    }
    static Ended json() { return run({QStringLiteral("--status"), QStringLiteral("--json")}); }
    static QJsonObject parsed(const Ended &ended)
    {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(ended.out.toUtf8(), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << ended.out.toStdString();
        return document.object();
    }
    QString target() const { return m_folder.filePath(QStringLiteral("copy.sqlite")); }
    Ended backUp() const { return run({QStringLiteral("--backup"), target()}); }

    QTemporaryDir m_folder;
};

TEST_F(AdminQueries, theReportIsTextOrCsv)
{
    keepTwo();
    const Ended text = run({QStringLiteral("--report")});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_EQ(text.out,
              QStringLiteral("2096-05-01T10:00:00\t2026-01-01T00:00:00\t+34600\tsent\t1\t7\t=a,b\n"
                             "2096-05-02T10:00:00\t2026-01-01T00:00:00\t601\tfailed\t-38\t\tñ\n"));
    EXPECT_EQ(
        run({QStringLiteral("--report"), QStringLiteral("--format"), QStringLiteral("text")}).out,
        text.out);
    const Ended csv =
        run({QStringLiteral("--report"), QStringLiteral("--format"), QStringLiteral("csv")});
    EXPECT_EQ(csv.exitCode, 0);
    EXPECT_EQ(csv.out,
              QStringLiteral("at,delivery date,phone,outcome,code,reference,message\r\n"
                             "2096-05-01T10:00:00,2026-01-01T00:00:00,+34600,sent,1,7,\"'=a,b\"\r\n"
                             "2096-05-02T10:00:00,2026-01-01T00:00:00,601,failed,-38,,ñ\r\n"));
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
        const Ended ended =
            run({QStringLiteral("--report"), QStringLiteral("--since"), QLatin1String(one.since)});
        EXPECT_EQ(ended.exitCode, 0) << one.since;
        EXPECT_EQ(ended.out.count(u'\n'), one.lines) << one.since;
    }
}

TEST_F(AdminQueries, theReportIsThereWhileTheEngineWorks)
{
    keepTwo();
    start();
    const Ended ended = run({QStringLiteral("--report")});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out.count(u'\n'), 2);
}

TEST_F(AdminQueries, withoutAStoreThereIsNoReportAndNoneIsMade)
{
    const Ended ended = run({QStringLiteral("--report")});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.err.contains(QLatin1String("no store yet")));
    EXPECT_FALSE(QFile::exists(folder()));
}

TEST_F(AdminQueries, whatDoesNotGoTogetherIsRefused)
{
    const QList<QStringList> wrong = {
        {QStringLiteral("--report"), QStringLiteral("--since"), QStringLiteral("yesterday")},
        {QStringLiteral("--report"), QStringLiteral("--format"), QStringLiteral("xml")},
        {QStringLiteral("--since"), QStringLiteral("2026-01-01")},
        {QStringLiteral("--format"), QStringLiteral("csv")},
        {QStringLiteral("--json")},
        {QStringLiteral("--status"), QStringLiteral("--json"), QStringLiteral("--queue")},
        {QStringLiteral("--report"), QStringLiteral("--queue")},
        {QStringLiteral("--report"), QStringLiteral("--status")},
        {QStringLiteral("--log-level"), QStringLiteral("loud")},
        {QStringLiteral("--backup")},
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
    EXPECT_EQ(report.value(QStringLiteral("engine")), QStringLiteral("not up"));
    EXPECT_EQ(report.value(QStringLiteral("toRun")), false);
    EXPECT_EQ(report.value(QStringLiteral("queue")), 0);
    EXPECT_TRUE(report.value(QStringLiteral("oldestDue")).isNull());
    EXPECT_FALSE(isOnBus());
}

TEST_F(AdminQueries, aMonitorSeesAStoppedEngineWithItsQueueAndItsLastFailure)
{
    keepTwo();
    start();
    addSMS(QStringLiteral("600"), QStringLiteral("secret"), QStringLiteral("2100-01-02T00:00:00"));
    addSMS(QStringLiteral("600"), QStringLiteral("secret"), QStringLiteral("2100-01-01T00:00:00"));
    setSettings({0, QStringLiteral("47119"), 1, 1, QStringLiteral("COM2, 9600")});
    const Ended ended = json();
    EXPECT_EQ(ended.exitCode, 1);
    const QJsonObject report = parsed(ended);
    EXPECT_EQ(report.value(QStringLiteral("engine")), QStringLiteral("stopped"));
    EXPECT_EQ(report.value(QStringLiteral("queue")), 2);
    EXPECT_EQ(report.value(QStringLiteral("oldestDue")), QStringLiteral("2100-01-01T00:00:00"));
    EXPECT_EQ(report.value(QStringLiteral("device")).toObject().value(QStringLiteral("parameter")),
              QStringLiteral("COM2, 9600"));
    EXPECT_EQ(report.value(QStringLiteral("lastFailed")).toObject(),
              (QJsonObject{{QStringLiteral("code"), -38},
                           {QStringLiteral("at"), QStringLiteral("2096-05-02T10:00:00")}}));
    EXPECT_FALSE(ended.out.contains(QLatin1String("secret")));
    EXPECT_FALSE(ended.out.contains(QLatin1String("47119")));
}

TEST_F(AdminQueries, aMonitorSeesTroubleWithTheDevice)
{
    start();
    setSettings(noDevice());
    call("StartEngine");
    ASSERT_TRUE(until([] { return json().exitCode == 3; }));
    const QJsonObject report = parsed(json());
    EXPECT_EQ(report.value(QStringLiteral("engine")), QStringLiteral("running"));
    EXPECT_EQ(report.value(QStringLiteral("trouble")).toArray().size(), 1);
    const QJsonObject error = report.value(QStringLiteral("lastError")).toObject();
    EXPECT_EQ(error.value(QStringLiteral("code")), -2);
    EXPECT_TRUE(
        error.value(QStringLiteral("text")).toString().contains(QLatin1String("/no/such/device")));
    EXPECT_EQ(error.value(QStringLiteral("at")).toString().size(), 19);
}

TEST_F(AdminQueries, anEngineThatCannotBeReachedIsTrouble)
{
    makeStore();
    FileLock lock(folder() + QStringLiteral("/engine.lock"));
    ASSERT_TRUE(lock.tryLock());
    const Ended ended = json();
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_EQ(parsed(ended).value(QStringLiteral("engine")), QStringLiteral("unknown"));
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
    EXPECT_TRUE(until([&] { return listener.has(QStringLiteral("WarningError -2")); }));
}

TEST_F(AdminQueries, aBackupHoldsEverythingForItsOwnerAlone)
{
    start();
    for (int number = 0; number < 50; ++number)
        addSMS(QString::number(number), QStringLiteral("text"), QString());
    const Ended ended = backUp();
    EXPECT_EQ(ended.exitCode, 0) << ended.err.toStdString();
    struct stat info = {};
    ASSERT_EQ(::stat(QFile::encodeName(target()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
    OtherConnection copy(target());
    EXPECT_EQ(copy.value(QStringLiteral("PRAGMA integrity_check")), QStringLiteral("ok"));
    EXPECT_EQ(copy.contents(), OtherConnection(storeFile()).contents());
    EXPECT_EQ(copy.value(QStringLiteral("PRAGMA user_version")),
              OtherConnection(storeFile()).value(QStringLiteral("PRAGMA user_version")));
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
    const QString link = m_folder.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(m_folder.filePath(QStringLiteral("nowhere")), link));
    EXPECT_EQ(run({QStringLiteral("--backup"), link}).exitCode, 1);
    EXPECT_FALSE(QFile::exists(m_folder.filePath(QStringLiteral("nowhere"))));
}

TEST_F(AdminQueries, noBackupIsMadeOfNothingOrToNowhere)
{
    EXPECT_EQ(backUp().exitCode, 1);
    EXPECT_FALSE(QFile::exists(target()));
    makeStore();
    const Ended nowhere = run({QStringLiteral("--backup"), QStringLiteral("/no/such/folder/x")});
    EXPECT_EQ(nowhere.exitCode, 1);
    EXPECT_TRUE(nowhere.err.contains(QLatin1String("/no/such/folder/x")));
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
