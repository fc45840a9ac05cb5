#include "TovekSMService/bus/EngineService.h"

#include "TovekSMService/bus/EngineState.h"
#include "TovekSMService/dispatch/DispatcherFixture.h"
#include "contract/BusTypes.h"
#include "smsmanagerbusadaptor.h"
#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusPendingCall>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The engine's side of the bus in this program, and a console that calls it. The engine's time is
/// turned; the bus takes the time that it takes.
class EngineServiceOnBus : public DispatcherFixture
{
protected:
    EngineServiceOnBus()
    {
        Bus::registerTypes();
        m_service = std::make_unique<EngineService>(m_engineBus, *m_store, *m_dispatcher, m_clock);
        new SMSManagerBusAdaptor(m_service.get());
        EXPECT_TRUE(m_engineBus.registerObject(QLatin1String(Bus::objectPath), m_service.get()));
    }
    ~EngineServiceOnBus() override
    {
        m_service.reset();
        QDBusConnection::disconnectFromBus(m_consoleBus.name());
        QDBusConnection::disconnectFromBus(m_engineBus.name());
    }

    QDBusPendingCall ask(const char *operation, const QVariantList &arguments = {}) const
    {
        constexpr int patience = 24 * 3'600'000; // ms
        QDBusMessage message = QDBusMessage::createMethodCall(
            m_engineBus.baseService(), QLatin1String(Bus::objectPath),
            QLatin1String(Bus::interfaceName), QLatin1String(operation));
        message.setArguments(arguments);
        return m_consoleBus.asyncCall(message, patience);
    }
    static bool isAnswered(const QDBusPendingCall &call)
    {
        return waitUntil([&] { return call.isFinished(); });
    }
    int askForNumber(const char *operation) const
    {
        const QDBusPendingCall call = ask(operation);
        EXPECT_TRUE(isAnswered(call));
        return call.reply().arguments().value(0).toInt();
    }
    QDBusPendingCall askToAdd() const { return ask("AddSMS", {u"600"_s, u"text"_s, noon()}); }
    static QVariantList someSettings()
    {
        return {QVariant::fromValue(DeviceSettings{0, QString(), 1, 1, u"/dev/other, 9600"_s})};
    }

    /// Whatever is written to the store fails at once.
    void refuseWriting()
    {
        for (const char *const table : {"message", "setting"})
            for (const char *const change : {"INSERT", "UPDATE"})
                m_other.run(u"CREATE TRIGGER refuse_%1_%2 BEFORE %2 ON %1 BEGIN "
                            "SELECT RAISE(ABORT, 'refused'); END"_s.arg(QLatin1String(table),
                                                                        QLatin1String(change)));
    }
    void allowWriting()
    {
        for (const char *const table : {"message", "setting"})
            for (const char *const change : {"INSERT", "UPDATE"})
                m_other.run(u"DROP TRIGGER refuse_%1_%2"_s.arg(QLatin1String(table),
                                                               QLatin1String(change)));
    }
    /// Whether so many calls have come that the store doesn't take.
    bool isWaiting(qsizetype calls) const
    {
        return waitUntil([&] { return m_log.count(u"a call waits"_s) == calls; });
    }

    NotedLog m_log;
    OtherConnection m_other{file()};
    QDBusConnection m_engineBus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"engine"_s);
    QDBusConnection m_consoleBus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"console"_s);
    std::unique_ptr<EngineService> m_service;
};

TEST_F(EngineServiceOnBus, callsFailWhenTheStoreCannotBeWrittenForTenSeconds)
{
    refuseWriting();
    const QDBusPendingCall adding = askToAdd();
    const QDBusPendingCall setting = ask("SetDeviceSettings", someSettings());
    const QDBusPendingCall starting = ask("StartEngine");
    ASSERT_TRUE(isWaiting(3));

    m_time.pass(9'999);
    // An answer to them would have come before the one to this.
    EXPECT_EQ(askForNumber("GetEngineStatus"), 0);
    EXPECT_FALSE(adding.isFinished() || setting.isFinished() || starting.isFinished());
    EXPECT_FALSE(has(u"warning -1"_s));

    m_time.pass(1);
    ASSERT_TRUE(isAnswered(adding) && isAnswered(setting) && isAnswered(starting));
    EXPECT_EQ(adding.reply().errorName(), u"com.tovek.SMService.Error.Store"_s);
    EXPECT_EQ(setting.reply().arguments(), QVariantList({false}));
    EXPECT_EQ(starting.reply().errorName(), u"com.tovek.SMService.Error.Store"_s);
    EXPECT_TRUE(has(u"warning -1"_s));

    // They are over, and not carried out later.
    allowWriting();
    m_time.pass(60'000);
    EXPECT_EQ(askForNumber("GetQueueSize"), 0);
    EXPECT_EQ(askForNumber("GetEngineStatus"), 0);
    ASSERT_TRUE(isAnswered(askToAdd()));
    EXPECT_EQ(askForNumber("GetQueueSize"), 1);
}

TEST_F(EngineServiceOnBus, aStoreThatCannotBeWrittenIsNotTriedWithoutPause)
{
    refuseWriting();
    const QDBusPendingCall adding = askToAdd();
    ASSERT_TRUE(isWaiting(1));
    const int before = m_time.rung();
    m_time.pass(10'000);
    ASSERT_TRUE(isAnswered(adding));
    // Fifty times by the call, and as often as the dispatcher looks after the store.
    EXPECT_LE(m_time.rung() - before, 10'000 / 200 + 10'000 / m_timings.storeRetryMs + 20);
}

TEST_F(EngineServiceOnBus, aCallWaitsForTheStoreWhileOthersAreServed)
{
    refuseWriting();
    const QDBusPendingCall adding = askToAdd();
    const QDBusPendingCall setting = ask("SetDeviceSettings", someSettings());
    ASSERT_TRUE(isWaiting(2));
    m_time.pass(5000);
    EXPECT_EQ(askForNumber("GetEngineStatus"), 0);
    EXPECT_EQ(askForNumber("GetQueueSize"), 0);
    EXPECT_FALSE(adding.isFinished() || setting.isFinished());

    allowWriting();
    m_time.pass(200);
    ASSERT_TRUE(isAnswered(adding) && isAnswered(setting));
    EXPECT_EQ(adding.reply().type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(setting.reply().arguments(), QVariantList({true}));
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(given(m_store->settings().deviceSettings()).Parameter, u"/dev/other, 9600"_s);
}

TEST_F(EngineServiceOnBus, aTroubleWithTheStoreStandsInTheStateOnce)
{
    m_dispatcher->noticeStoreFailure({StoreFailure::Kind::Other, u"refused"_s});
    m_dispatcher->warnOfStore(u"refused"_s);
    EXPECT_EQ(EngineState::ofRunning(*m_store, *m_dispatcher, std::nullopt).value(u"trouble"_s),
              QStringList{u"the store: refused"_s});
}

TEST_F(EngineServiceOnBus, aListenerThatHasLeftBeforeItsCallIsHandledIsNoListener)
{
    {
        const QDBusConnection visitor =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"visitor"_s);
        QDBusMessage report = QDBusMessage::createMethodCall(
            m_engineBus.baseService(), QLatin1String(Bus::objectPath),
            QLatin1String(Bus::interfaceName), u"ReportState"_s);
        visitor.asyncCall(report);
        // The bus has passed on what came before this question. The engine is in this thread.
        EXPECT_TRUE(visitor.interface()->isServiceRegistered(visitor.baseService()));
    }
    QDBusConnection::disconnectFromBus(u"visitor"_s);

    const auto listeners = [this] {
        const QDBusPendingCall call = ask("GetState");
        EXPECT_TRUE(isAnswered(call));
        return qdbus_cast<QVariantMap>(call.reply().arguments().value(0))
            .value(u"listeners"_s, -1)
            .toInt();
    };
    EXPECT_TRUE(waitUntil([&] { return listeners() == 0; }));
}

TEST_F(EngineServiceOnBus, queueingIsReportedAtOnceAndThenInGroups)
{
    const QSignalSpy reports(m_service.get(), &EngineService::SMSQueueChanged);
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(isAnswered(askToAdd()));
    ASSERT_EQ(reports.count(), 1);
    EXPECT_EQ(reports.first().constFirst().toInt(), 1);
    m_time.pass(QueueChangePacer::minInterval);
    ASSERT_EQ(reports.count(), 2);
    EXPECT_EQ(reports.last().constFirst().toInt(), 200);
}

} // namespace

} // namespace norvane
