#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoreResults.h"

#include <QDir>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

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
        EXPECT_TRUE(bus.connect(u"com.tovek.SMService"_s, u"/com/tovek/SMService"_s,
                                u"com.tovek.SMService.SMSManager1"_s, u"ReportRaised"_s, this,
                                SLOT(note(qlonglong))));
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
            done(store.open());
            done(store.queue().add({{phone, u"text"_s}}, QString()));
            done(store.queue().finish(given(store.queue().first())->id, -17, std::nullopt,
                                      u"then"_s, false));
        }
        start();
    }
    static bool isUnreported()
    {
        return OtherConnection(storeFile())
                   .value(u"SELECT COUNT(*) FROM outcome WHERE reported = 0"_s)
                   .toInt() > 0;
    }
};

TEST_F(EngineReports, aFailureThatWasNotAcknowledgedIsToldToTheNextConsole)
{
    keepFailure(u"600"_s);
    const QString failure = u"SMSSentFailed 600 text -17"_s;
    {
        const auto dying = makeConsole("dying");
        EXPECT_EQ(dying->heard(u"SMSSentFailed"_s), QStringList{failure});
        EXPECT_EQ(dying->reports.size(), 1);
    }
    const auto next = makeConsole("next");
    ASSERT_EQ(next->heard(u"SMSSentFailed"_s), QStringList{failure});
    ASSERT_EQ(next->reports.size(), 1);
    EXPECT_TRUE(isUnreported());
    acknowledge(*next, next->reports);
    EXPECT_TRUE(until([] { return !isUnreported(); }));
    EXPECT_TRUE(makeConsole("last")->heard(u"SMSSentFailed"_s).isEmpty());
}

TEST_F(EngineReports, aFailureThatIsHandledIsNotToldWhileTheStoreCannotNoteIt)
{
    keepFailure(u"600"_s);
    const auto first = makeConsole("first");
    ASSERT_EQ(first->reports.size(), 1);
    OtherConnection other(storeFile());
    other.run(u"BEGIN IMMEDIATE"_s);
    acknowledge(*first, first->reports);
    EXPECT_TRUE(makeConsole("next")->heard(u"SMSSentFailed"_s).isEmpty());
    EXPECT_TRUE(isUnreported());
    other.run(u"ROLLBACK"_s);
    EXPECT_TRUE(until([] { return !isUnreported(); }));
}

TEST_F(EngineReports, theNextConsoleIsToldWhileTheOneThatHasNotAnsweredIsStillThere)
{
    keepFailure(u"600"_s);
    const auto hanging = makeConsole("hanging");
    const auto next = makeConsole("next");
    EXPECT_EQ(next->heard(u"SMSSentFailed"_s).size(), 1);
    // Neither is told again by asking again.
    call("ReportState", {}, hanging->bus);
    settle(*hanging);
    EXPECT_EQ(hanging->heard(u"SMSSentFailed"_s).size(), 1);
}

TEST_F(EngineReports, nobodyAcknowledgesForAConsoleThatWasTold)
{
    keepFailure(u"600"_s);
    BusConsole stranger(u"stranger"_s);
    {
        const auto told = makeConsole("told");
        ASSERT_EQ(told->reports.size(), 1);
        acknowledge(stranger, told->reports);
    }
    EXPECT_EQ(makeConsole("next")->heard(u"SMSSentFailed"_s).size(), 1);
}

TEST_F(EngineReports, theWarningOfAMessageInDoubtComesBeforeItsNumber)
{
    stop();
    {
        Store store(storeFile());
        done(store.open());
        done(store.queue().add({{u"601"_s, u"more"_s}}, QString()));
        done(store.queue().begin({{given(store.queue().first())->id, std::nullopt, {}}}));
    }
    start();
    ASSERT_TRUE(until([] { return callForNumber("GetQueueSize") == 0; }));
    const auto console = makeConsole("console");
    EXPECT_EQ(console->heard(u"SMSSentFailed"_s).size(), 1);
    EXPECT_EQ(console->heard(u"WarningError -39"_s).size(), 1);
    EXPECT_EQ(console->reports.size(), 1) << "one acknowledgement for both";
}

TEST_F(EngineReports, aConsoleThatIsOlderThanAcknowledgementsCountsAsToldWhenItIsTold)
{
    keepFailure(u"600"_s);
    {
        BusConsole older(u"older"_s);
        call("ReportState", {}, older.bus);
        settle(older);
        EXPECT_EQ(older.heard(u"SMSSentFailed"_s).size(), 1);
        call("ReportState", {}, older.bus);
        settle(older);
        EXPECT_EQ(older.heard(u"SMSSentFailed"_s).size(), 1);
    }
    EXPECT_TRUE(makeConsole("next")->heard(u"SMSSentFailed"_s).isEmpty());
}

TEST_F(EngineReports, aTroubleThatStandsIsToldToEveryConsole)
{
    setSettings(noDevice());
    const QStringList warning{u"WarningError -2 /no/such/device"_s};
    const auto first = makeConsole("first");
    call("StartEngine", {}, first->bus);
    ASSERT_TRUE(until([&] { return !first->reports.isEmpty(); }));
    acknowledge(*first, first->reports);
    EXPECT_EQ(makeConsole("second")->heard(u"WarningError"_s), warning);
    // Once, also where it has not been handled yet.
    EXPECT_EQ(first->heard(u"WarningError"_s), warning);
    call("StopEngine");
    EXPECT_TRUE(makeConsole("third")->heard(u"WarningError"_s).isEmpty());
}

TEST_F(EngineReports, aTroubleThatStandsAndIsNotHandledYetIsToldOnce)
{
    setSettings(noDevice());
    const auto first = makeConsole("first");
    call("StartEngine", {}, first->bus);
    ASSERT_TRUE(until([&] { return !first->reports.isEmpty(); }));
    EXPECT_EQ(makeConsole("second")->heard(u"WarningError"_s),
              QStringList{u"WarningError -2 /no/such/device"_s});
}

TEST_F(EngineReports, aWarningThatWasNotAcknowledgedIsToldToTheNextConsole)
{
    {
        const auto dying = makeConsole("dying");
        const WireRow gone = {QString(), u"600"_s, u"new"_s, 4711};
        call("UpdateQueue",
             {QVariant::fromValue(QList<WireRow>({gone})), QVariant::fromValue(QList<qlonglong>())},
             dying->bus);
        ASSERT_TRUE(until([&] { return dying->reports.size() == 1; }));
    }
    const auto next = makeConsole("next");
    EXPECT_EQ(next->heard(u"WarningError -9"_s).size(), 1);
    acknowledge(*next, next->reports);
    EXPECT_TRUE(makeConsole("last")->heard(u"WarningError"_s).isEmpty());
}

TEST_F(EngineReports, aWarningThatIsStillBeingHandledIsNotToldAgainToWhoAsksAgain)
{
    const auto console = makeConsole("console");
    const WireRow gone = {QString(), u"600"_s, u"new"_s, 4711};
    call("UpdateQueue",
         {QVariant::fromValue(QList<WireRow>({gone})), QVariant::fromValue(QList<qlonglong>())},
         console->bus);
    ASSERT_TRUE(until([&] { return console->reports.size() == 1; }));
    call("ReportState", {}, console->bus);
    settle(*console);
    EXPECT_EQ(console->heard(u"WarningError -9"_s).size(), 1);
}

TEST_F(EngineReports, damageIsToldUntilItIsAcknowledged)
{
    stop();
    QFile store(storeFile());
    ASSERT_TRUE(store.open(QIODevice::WriteOnly | QIODevice::Truncate));
    store.write(QByteArray(10'000, 'g'));
    store.close();
    const QString note = folder() + u"/damaged.note"_s;
    start();
    EXPECT_EQ(makeConsole("dying")->heard(u"WarningError -57"_s).size(), 1);
    EXPECT_TRUE(QFile::exists(note));
    const auto next = makeConsole("next");
    EXPECT_EQ(next->heard(u"WarningError -57"_s).size(), 1);
    acknowledge(*next, next->reports);
    EXPECT_FALSE(QFile::exists(note));
}

TEST_F(EngineReports, theStatusAsTextNamesTheTroubleThatStands)
{
    const auto status = [] { return run({u"--status"_s}).out; };
    EXPECT_TRUE(status().endsWith(u"\ntrouble: none\n"_s)) << qPrintable(status());
    setSettings(noDevice());
    call("StartEngine");
    EXPECT_TRUE(until([&] {
        return status().endsWith(u"\ntrouble: the device: -2 /no/such/device\n"_s);
    })) << qPrintable(status());
}

} // namespace

#include "EngineReportsTest.moc"

} // namespace norvane
