#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/Store.h"

#include <QDir>

#include <memory>

namespace {

/// A console as the bus sees it: a connection of its own that acknowledges, or doesn't.
class BusConsole : public QObject
{
    Q_OBJECT

public:
    explicit BusConsole(const QString &name)
        : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)), m_name(name),
          m_listener(bus)
    {
        EXPECT_TRUE(bus.connect(QStringLiteral("com.tovek.SMService"),
                                QStringLiteral("/com/tovek/SMService"),
                                QStringLiteral("com.tovek.SMService.SMSManager1"),
                                QStringLiteral("ReportRaised"), this, SLOT(note(qlonglong))));
    }
    ~BusConsole() override { QDBusConnection::disconnectFromBus(m_name); }

    QStringList heard(const QString &event) const { return m_listener.heard.filter(event); }

    QDBusConnection bus;
    QList<qlonglong> reports;

private Q_SLOTS:
    void note(qlonglong report) { reports << report; }

private:
    QString m_name;
    Listener m_listener;
};

class EngineReports : public EngineProcess
{
protected:
    EngineReports() { start(); }

    static void acknowledge(BusConsole &console, const QList<qlonglong> &reports)
    {
        call("AcknowledgeReports", {QVariant::fromValue(reports)}, console.bus);
    }
    /// What the engine sent to the console before this has arrived afterwards.
    static void settle(BusConsole &console)
    {
        call("GetEngineStatus", {}, console.bus);
        QCoreApplication::processEvents();
    }
    static std::unique_ptr<BusConsole> makeConsole(const char *name)
    {
        auto console = std::make_unique<BusConsole>(QLatin1String(name));
        acknowledge(*console, {});
        call("ReportState", {}, console->bus);
        settle(*console);
        return console;
    }
    /// Keeps the outcome of a message that failed, with nobody there to hear of it.
    void keepFailure(const QString &phone)
    {
        stop();
        {
            Store store(storeFile());
            store.add({{phone, QStringLiteral("text")}}, QString());
            store.finish(store.first()->id, -17, std::nullopt, QStringLiteral("then"), false);
        }
        start();
    }
    static bool isUnreported()
    {
        return OtherConnection(storeFile())
                   .value(QStringLiteral("SELECT COUNT(*) FROM outcome WHERE reported = 0"))
                   .toInt() > 0;
    }
};

TEST_F(EngineReports, aFailureThatWasNotAcknowledgedIsToldToTheNextConsole)
{
    keepFailure(QStringLiteral("600"));
    const QString failure = QStringLiteral("SMSSentFailed 600 text -17");
    {
        const auto dying = makeConsole("dying");
        EXPECT_EQ(dying->heard(QStringLiteral("SMSSentFailed")), QStringList{failure});
        EXPECT_EQ(dying->reports.size(), 1);
    }
    const auto next = makeConsole("next");
    ASSERT_EQ(next->heard(QStringLiteral("SMSSentFailed")), QStringList{failure});
    ASSERT_EQ(next->reports.size(), 1);
    EXPECT_TRUE(isUnreported());
    acknowledge(*next, next->reports);
    EXPECT_TRUE(until([] { return !isUnreported(); }));
    EXPECT_TRUE(makeConsole("last")->heard(QStringLiteral("SMSSentFailed")).isEmpty());
}

TEST_F(EngineReports, aFailureThatIsHandledIsNotToldWhileTheStoreCannotNoteIt)
{
    keepFailure(QStringLiteral("600"));
    const auto first = makeConsole("first");
    ASSERT_EQ(first->reports.size(), 1);
    OtherConnection other(storeFile());
    other.run(QStringLiteral("BEGIN IMMEDIATE"));
    acknowledge(*first, first->reports);
    EXPECT_TRUE(makeConsole("next")->heard(QStringLiteral("SMSSentFailed")).isEmpty());
    EXPECT_TRUE(isUnreported());
    other.run(QStringLiteral("ROLLBACK"));
    EXPECT_TRUE(until([] { return !isUnreported(); }));
}

TEST_F(EngineReports, theNextConsoleIsToldWhileTheOneThatHasNotAnsweredIsStillThere)
{
    keepFailure(QStringLiteral("600"));
    const auto hanging = makeConsole("hanging");
    const auto next = makeConsole("next");
    EXPECT_EQ(next->heard(QStringLiteral("SMSSentFailed")).size(), 1);
    // Neither is told again by asking again.
    call("ReportState", {}, hanging->bus);
    settle(*hanging);
    EXPECT_EQ(hanging->heard(QStringLiteral("SMSSentFailed")).size(), 1);
}

TEST_F(EngineReports, nobodyAcknowledgesForAConsoleThatWasTold)
{
    keepFailure(QStringLiteral("600"));
    BusConsole stranger(QStringLiteral("stranger"));
    {
        const auto told = makeConsole("told");
        ASSERT_EQ(told->reports.size(), 1);
        acknowledge(stranger, told->reports);
    }
    EXPECT_EQ(makeConsole("next")->heard(QStringLiteral("SMSSentFailed")).size(), 1);
}

TEST_F(EngineReports, theWarningOfAMessageInDoubtComesBeforeItsNumber)
{
    stop();
    {
        Store store(storeFile());
        store.add({{QStringLiteral("601"), QStringLiteral("more")}}, QString());
        store.beginPart(store.first()->id, std::nullopt, {});
    }
    start();
    ASSERT_TRUE(until([] { return callForNumber("GetQueueSize") == 0; }));
    const auto console = makeConsole("console");
    EXPECT_EQ(console->heard(QStringLiteral("SMSSentFailed")).size(), 1);
    EXPECT_EQ(console->heard(QStringLiteral("WarningError -39")).size(), 1);
    EXPECT_EQ(console->reports.size(), 1) << "one acknowledgement for both";
}

TEST_F(EngineReports, aConsoleThatIsOlderThanAcknowledgementsCountsAsToldWhenItIsTold)
{
    keepFailure(QStringLiteral("600"));
    {
        BusConsole older(QStringLiteral("older"));
        call("ReportState", {}, older.bus);
        settle(older);
        EXPECT_EQ(older.heard(QStringLiteral("SMSSentFailed")).size(), 1);
        call("ReportState", {}, older.bus);
        settle(older);
        EXPECT_EQ(older.heard(QStringLiteral("SMSSentFailed")).size(), 1);
    }
    EXPECT_TRUE(makeConsole("next")->heard(QStringLiteral("SMSSentFailed")).isEmpty());
}

TEST_F(EngineReports, aTroubleThatStandsIsToldToEveryConsole)
{
    setSettings(noDevice());
    const QStringList warning{QStringLiteral("WarningError -2 /no/such/device")};
    const auto first = makeConsole("first");
    call("StartEngine", {}, first->bus);
    ASSERT_TRUE(until([&] { return !first->reports.isEmpty(); }));
    acknowledge(*first, first->reports);
    EXPECT_EQ(makeConsole("second")->heard(QStringLiteral("WarningError")), warning);
    // Once, also where it has not been handled yet.
    EXPECT_EQ(first->heard(QStringLiteral("WarningError")), warning);
    call("StopEngine");
    EXPECT_TRUE(makeConsole("third")->heard(QStringLiteral("WarningError")).isEmpty());
}

TEST_F(EngineReports, aTroubleThatStandsAndIsNotHandledYetIsToldOnce)
{
    setSettings(noDevice());
    const auto first = makeConsole("first");
    call("StartEngine", {}, first->bus);
    ASSERT_TRUE(until([&] { return !first->reports.isEmpty(); }));
    EXPECT_EQ(makeConsole("second")->heard(QStringLiteral("WarningError")),
              QStringList{QStringLiteral("WarningError -2 /no/such/device")});
}

TEST_F(EngineReports, aWarningThatWasNotAcknowledgedIsToldToTheNextConsole)
{
    {
        const auto dying = makeConsole("dying");
        const WireRow gone = {QString(), QStringLiteral("600"), QStringLiteral("new"), 4711};
        call("UpdateQueue",
             {QVariant::fromValue(QList<WireRow>({gone})), QVariant::fromValue(QList<qlonglong>())},
             dying->bus);
        ASSERT_TRUE(until([&] { return dying->reports.size() == 1; }));
    }
    const auto next = makeConsole("next");
    EXPECT_EQ(next->heard(QStringLiteral("WarningError -9")).size(), 1);
    acknowledge(*next, next->reports);
    EXPECT_TRUE(makeConsole("last")->heard(QStringLiteral("WarningError")).isEmpty());
}

TEST_F(EngineReports, aWarningThatIsStillBeingHandledIsNotToldAgainToWhoAsksAgain)
{
    const auto console = makeConsole("console");
    const WireRow gone = {QString(), QStringLiteral("600"), QStringLiteral("new"), 4711};
    call("UpdateQueue",
         {QVariant::fromValue(QList<WireRow>({gone})), QVariant::fromValue(QList<qlonglong>())},
         console->bus);
    ASSERT_TRUE(until([&] { return console->reports.size() == 1; }));
    call("ReportState", {}, console->bus);
    settle(*console);
    EXPECT_EQ(console->heard(QStringLiteral("WarningError -9")).size(), 1);
}

TEST_F(EngineReports, damageIsToldUntilItIsAcknowledged)
{
    stop();
    QFile store(storeFile());
    ASSERT_TRUE(store.open(QIODevice::WriteOnly | QIODevice::Truncate));
    store.write(QByteArray(10'000, 'g'));
    store.close();
    const QString note = folder() + QStringLiteral("/damaged.note");
    start();
    EXPECT_EQ(makeConsole("dying")->heard(QStringLiteral("WarningError -57")).size(), 1);
    EXPECT_TRUE(QFile::exists(note));
    const auto next = makeConsole("next");
    EXPECT_EQ(next->heard(QStringLiteral("WarningError -57")).size(), 1);
    acknowledge(*next, next->reports);
    EXPECT_FALSE(QFile::exists(note));
}

TEST_F(EngineReports, theStatusAsTextNamesTheTroubleThatStands)
{
    const auto status = [] { return run({QStringLiteral("--status")}).out; };
    EXPECT_TRUE(status().endsWith(QStringLiteral("\ntrouble: none\n"))) << qPrintable(status());
    setSettings(noDevice());
    call("StartEngine");
    EXPECT_TRUE(until([&] {
        return status().endsWith(QStringLiteral("\ntrouble: the device: -2 /no/such/device\n"));
    })) << qPrintable(status());
}

} // namespace

#include "EngineReportsTest.moc"
