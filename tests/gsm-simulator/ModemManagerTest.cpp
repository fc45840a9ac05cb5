#include "gsm-simulator/ModemObject.h"
#include "gsm-simulator/RunningSimulator.h"
#include "support/ModemManagerDaemon.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Tries = QMap<uint, uint>; ///< by locks

enum State { Locked = 2, Disabled = 3, Enabled = 6, Searching = 7, Registered = 8 };
enum Lock : uint { NoLock = 1, SimPin = 2, SimPuk = 4 };
enum MessageState : uint { Unsent = 0, Receiving = 2, Received = 3, Sent = 5 };
enum PduType : uint { Deliver = 1, StatusReport = 3 };

/// Simulated modems that the real daemon drives, which all tests share.
class SimulatorBehindModemManager : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(ModemManagerDaemon::isInstalled());
        daemon = std::make_unique<ModemManagerDaemon>();
    }

    static void TearDownTestSuite() { daemon.reset(); }

    SimulatorBehindModemManager() { qDBusRegisterMetaType<Tries>(); }

    ~SimulatorBehindModemManager() override
    {
        if (simulator) {
            EXPECT_TRUE(daemon->detach(deviceName()));
        }
        if (HasFailure())
            qWarning("%s", logOfDaemon().constData());
    }

    static QByteArray logOfDaemon()
    {
        QFile log(daemon->logPath());
        return log.open(QIODevice::ReadOnly) ? log.readAll().right(20'000) : QByteArray();
    }

    static QString deviceName()
    {
        return QString::fromLatin1(testing::UnitTest::GetInstance()->current_test_info()->name());
    }

    /// Starts a simulator and lets the daemon find it.
    void plugIn(const QStringList &options = {})
    {
        simulator = std::make_unique<RunningSimulator>(options, RunningSimulator::Port::Socket);
        ASSERT_TRUE(simulator->isReady());
        ASSERT_FALSE(daemon->attach(deviceName(), simulator->socketPath()).isEmpty());
    }

    /// The same, and enables the modem.
    void plugInRegistered(const QStringList &options = {})
    {
        plugIn(options);
        ASSERT_TRUE(succeeded(modem().call(u"Modem"_s, u"Enable"_s, {true})));
        ASSERT_TRUE(reaches(Registered));
    }

    static ModemObject modem() { return {daemon->connection(), daemon->modemPath(deviceName())}; }

    static ModemObject sim() { return modem().objectOf(u"Modem"_s, u"Sim"_s); }

    static int state() { return modem().property(u"Modem"_s, u"State"_s).toInt(); }

    static bool reaches(State wanted)
    {
        return waitUntil([wanted] { return state() == wanted; });
    }

    static uint lock() { return modem().property(u"Modem"_s, u"UnlockRequired"_s).toUInt(); }

    static Tries tries()
    {
        return qdbus_cast<Tries>(modem().property(u"Modem"_s, u"UnlockRetries"_s));
    }

    static testing::AssertionResult succeeded(const QDBusMessage &reply)
    {
        if (reply.type() == QDBusMessage::ReplyMessage)
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << qPrintable(reply.errorName()) << ": " << qPrintable(reply.errorMessage());
    }

    static ModemObject create(const QVariantMap &properties)
    {
        const QDBusMessage reply = modem().call(u"Modem.Messaging"_s, u"Create"_s, {properties});
        EXPECT_TRUE(succeeded(reply));
        return {daemon->connection(), reply.arguments().value(0).value<QDBusObjectPath>().path()};
    }

    static ModemObject createText(const QString &text)
    {
        return create({{u"number"_s, u"+34600111222"_s}, {u"text"_s, text}});
    }

    static QString textOf(const ModemObject &message)
    {
        return message.property(u"Sms"_s, u"Text"_s).toString();
    }

    static uint numberOf(const ModemObject &message, const QString &name)
    {
        return message.property(u"Sms"_s, name).toUInt();
    }

    QByteArray control(const QByteArray &command) const
    {
        return ControlClient(simulator->controlPath()).ask(command);
    }

    /// What the simulator has accepted.
    QString accepted(const QString &member) const
    {
        QString all;
        for (const QJsonObject &message : simulator->messages())
            all += message.value(member).toString();
        return all;
    }

    static inline std::unique_ptr<ModemManagerDaemon> daemon;
    std::unique_ptr<RunningSimulator> simulator;
};

} // namespace

TEST_F(SimulatorBehindModemManager, theModemAppearsWithWhatItSaysOfItself)
{
    plugIn({u"--imei"_s, u"490154203237520"_s, u"--model"_s, u"Thing"_s});
    const ModemObject found = modem();
    EXPECT_EQ(found.property(u"Modem"_s, u"Manufacturer"_s).toString(), u"Norvane"_s);
    EXPECT_EQ(found.property(u"Modem"_s, u"Model"_s).toString(), u"Thing"_s);
    EXPECT_EQ(found.property(u"Modem"_s, u"EquipmentIdentifier"_s).toString(),
              u"490154203237520"_s);
    EXPECT_EQ(found.property(u"Modem"_s, u"PrimaryPort"_s).toString(), simulator->socketPath());
    EXPECT_EQ(sim().property(u"Sim"_s, u"SimIdentifier"_s).toString(), u"8988211000000000005"_s);
    EXPECT_EQ(sim().property(u"Sim"_s, u"Imsi"_s).toString(), u"001010123456789"_s);
    EXPECT_EQ(sim().property(u"Sim"_s, u"OperatorIdentifier"_s).toString(), u"00101"_s);
    EXPECT_EQ(lock(), NoLock);
    EXPECT_EQ(tries(), (Tries{{SimPin, 3}, {SimPuk, 10}}));
    EXPECT_EQ(state(), Disabled);
}

TEST_F(SimulatorBehindModemManager, isEnabledAndRegistered)
{
    plugInRegistered();
    const ModemObject found = modem();
    EXPECT_EQ(found.property(u"Modem.Modem3gpp"_s, u"RegistrationState"_s).toUInt(), 1U);
    EXPECT_EQ(found.property(u"Modem.Modem3gpp"_s, u"OperatorCode"_s).toString(), u"00101"_s);
    EXPECT_EQ(found.property(u"Modem.Modem3gpp"_s, u"OperatorName"_s).toString(),
              u"Simulated network"_s);
    EXPECT_TRUE(succeeded(found.call(u"Modem"_s, u"Enable"_s, {false})));
    EXPECT_EQ(state(), Disabled);
}

TEST_F(SimulatorBehindModemManager, showsWhereThereIsNoNetwork)
{
    plugIn({u"--registered"_s, u"0"_s});
    ASSERT_TRUE(succeeded(modem().call(u"Modem"_s, u"Enable"_s, {true})));
    EXPECT_EQ(state(), Enabled);
    EXPECT_EQ(createText(u"lost"_s).call(u"Sms"_s, u"Send"_s).errorName(),
              u"org.freedesktop.ModemManager1.Error.Message.NoNetwork"_s);
    control("registered 2");
    EXPECT_TRUE(reaches(Searching));
    control("registered 5");
    EXPECT_TRUE(reaches(Registered));
    EXPECT_EQ(modem().property(u"Modem.Modem3gpp"_s, u"RegistrationState"_s).toUInt(), 5U);
    control("registered 3");
    EXPECT_TRUE(reaches(Enabled));
    EXPECT_EQ(modem().property(u"Modem.Modem3gpp"_s, u"RegistrationState"_s).toUInt(), 3U);
}

TEST_F(SimulatorBehindModemManager, followsTheSignal)
{
    plugInRegistered({u"--signal"_s, u"31"_s});
    const auto quality = [] {
        const auto value = modem().property(u"Modem"_s, u"SignalQuality"_s).value<QDBusArgument>();
        uint percent = 0;
        value.beginStructure();
        value >> percent;
        value.endStructure();
        return percent;
    };
    EXPECT_TRUE(waitUntil([&] { return quality() == 100; }));
    control("signal 2");
    EXPECT_TRUE(waitUntil([&] { return quality() == 20; }));
}

TEST_F(SimulatorBehindModemManager, sendsAMessage)
{
    plugInRegistered({u"--first-reference"_s, u"7"_s});
    const ModemObject message = createText(u"Hello @ {world} €"_s);
    EXPECT_EQ(numberOf(message, u"State"_s), Unsent);
    EXPECT_TRUE(succeeded(message.call(u"Sms"_s, u"Send"_s)));
    EXPECT_EQ(numberOf(message, u"State"_s), Sent);
    EXPECT_EQ(numberOf(message, u"MessageReference"_s), 7U);
    ASSERT_EQ(simulator->messages().size(), 1);
    EXPECT_EQ(accepted(u"number"_s), u"+34600111222"_s);
    EXPECT_EQ(accepted(u"text"_s), u"Hello @ {world} €"_s);
    EXPECT_EQ(accepted(u"coding"_s), u"gsm7"_s);
}

TEST_F(SimulatorBehindModemManager, sendsALongTextInParts)
{
    plugInRegistered();
    const QString text = u"0123456789"_s.repeated(40);
    EXPECT_TRUE(succeeded(createText(text).call(u"Sms"_s, u"Send"_s)));
    const QList<QJsonObject> parts = simulator->messages();
    ASSERT_EQ(parts.size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(parts.at(i).value(u"part"_s).toInt(), i + 1);
        EXPECT_EQ(parts.at(i).value(u"parts"_s).toInt(), 3);
        EXPECT_EQ(parts.at(i).value(u"concatenation"_s), parts.at(0).value(u"concatenation"_s));
    }
    EXPECT_EQ(accepted(u"text"_s), text);
}

TEST_F(SimulatorBehindModemManager, sendsWhatTheDefaultAlphabetHasNot)
{
    plugInRegistered();
    const QString text = u"Привет, мир ☺ 😀"_s;
    EXPECT_TRUE(succeeded(createText(text).call(u"Sms"_s, u"Send"_s)));
    EXPECT_EQ(accepted(u"text"_s), text);
    EXPECT_EQ(accepted(u"coding"_s), u"ucs2"_s);
}

TEST_F(SimulatorBehindModemManager, whatTheNetworkRefusesIsAnError)
{
    plugInRegistered({u"--fail-every"_s, u"2"_s, u"--fail-code"_s, u"38"_s});
    EXPECT_TRUE(succeeded(createText(u"one"_s).call(u"Sms"_s, u"Send"_s)));
    const ModemObject message = createText(u"two"_s);
    const QDBusMessage refusal = message.call(u"Sms"_s, u"Send"_s);
    EXPECT_EQ(refusal.errorName(), u"org.freedesktop.ModemManager1.Error.Message.Unknown"_s);
    EXPECT_TRUE(refusal.errorMessage().endsWith(u" 38"_s)) << qPrintable(refusal.errorMessage());
    EXPECT_EQ(numberOf(message, u"State"_s), Unsent);
    EXPECT_TRUE(succeeded(message.call(u"Sms"_s, u"Send"_s)));
    EXPECT_EQ(accepted(u"text"_s), u"onetwo"_s);
}

TEST_F(SimulatorBehindModemManager, theReportOnAMessageArrives)
{
    plugInRegistered({u"--first-reference"_s, u"200"_s, u"--report-status"_s, u"70"_s});
    const AddedMessages added(daemon->connection(), modem().path());
    const ModemObject message = create({{u"number"_s, u"+34600111222"_s},
                                        {u"text"_s, u"x"_s},
                                        {u"delivery-report-request"_s, true}});
    EXPECT_TRUE(succeeded(message.call(u"Sms"_s, u"Send"_s)));
    ASSERT_TRUE(waitUntil([&] { return !added.received().isEmpty(); }));
    const ModemObject &report = added.received().constFirst();
    EXPECT_EQ(numberOf(report, u"PduType"_s), StatusReport);
    EXPECT_EQ(numberOf(report, u"MessageReference"_s), 200U);
    EXPECT_EQ(numberOf(report, u"DeliveryState"_s), 70U);
    EXPECT_EQ(report.property(u"Sms"_s, u"Number"_s).toString(), u"+34600111222"_s);
}

TEST_F(SimulatorBehindModemManager, anIncomingMessageArrives)
{
    plugInRegistered();
    const AddedMessages added(daemon->connection(), modem().path());
    EXPECT_EQ(control(R"(deliver {"from":"+34600999888","text":"BAJA ☺"})"), "ok 1");
    ASSERT_TRUE(waitUntil([&] { return !added.received().isEmpty(); }));
    const ModemObject &message = added.received().constFirst();
    EXPECT_EQ(numberOf(message, u"PduType"_s), Deliver);
    EXPECT_EQ(numberOf(message, u"State"_s), Received);
    EXPECT_EQ(textOf(message), u"BAJA ☺"_s);
    EXPECT_EQ(message.property(u"Sms"_s, u"Number"_s).toString(), u"+34600999888"_s);
    EXPECT_EQ(control("memory ME"), "ok 1 20");
    EXPECT_TRUE(succeeded(modem().call(u"Modem.Messaging"_s, u"Delete"_s,
                                       {QVariant::fromValue(QDBusObjectPath(message.path()))})));
    EXPECT_EQ(control("memory ME"), "ok 0 20");
}

TEST_F(SimulatorBehindModemManager, thePartsOfALongIncomingTextBecomeOneMessage)
{
    plugInRegistered();
    const AddedMessages added(daemon->connection(), modem().path());
    const QByteArray text = QByteArray("abcdefghij").repeated(20);
    const QByteArray from = R"(deliver {"from":"+34600999888","reference":5,"text":")" + text;
    EXPECT_EQ(control(from + R"(","order":[2]})"), "ok 1");
    ASSERT_TRUE(waitUntil([&] { return !added.received().isEmpty(); }));
    EXPECT_EQ(numberOf(added.received().constFirst(), u"State"_s), Receiving);
    EXPECT_EQ(control(from + R"(","order":[1]})"), "ok 1");
    const ModemObject message = added.received().constFirst();
    ASSERT_TRUE(waitUntil([&] { return numberOf(message, u"State"_s) == Received; }));
    EXPECT_EQ(textOf(message), QString::fromLatin1(text));
    EXPECT_EQ(added.received().size(), 1);
}

TEST_F(SimulatorBehindModemManager, whatHasArrivedBeforeIsThereWhenItIsEnabled)
{
    plugIn();
    EXPECT_EQ(control(R"(deliver {"from":"+34600999888","text":"early"})"), "ok 1");
    ASSERT_TRUE(succeeded(modem().call(u"Modem"_s, u"Enable"_s, {true})));
    const auto messages = [] {
        return qdbus_cast<QList<QDBusObjectPath>>(
            modem().property(u"Modem.Messaging"_s, u"Messages"_s));
    };
    ASSERT_TRUE(waitUntil([&] { return messages().size() == 1; }));
    EXPECT_EQ(textOf({daemon->connection(), messages().constFirst().path()}), u"early"_s);
}

TEST_F(SimulatorBehindModemManager, aWrongPinTakesATryAndTheRightOneOpensTheCard)
{
    plugIn({u"--pin"_s, u"1234"_s});
    EXPECT_EQ(state(), Locked);
    EXPECT_EQ(lock(), SimPin);
    EXPECT_EQ(tries().value(SimPin), 3U);
    EXPECT_EQ(modem().call(u"Modem"_s, u"Enable"_s, {true}).errorName(),
              u"org.freedesktop.ModemManager1.Error.Core.WrongState"_s);
    EXPECT_EQ(sim().call(u"Sim"_s, u"SendPin"_s, {u"9999"_s}).errorName(),
              u"org.freedesktop.ModemManager1.Error.MobileEquipment.IncorrectPassword"_s);
    EXPECT_TRUE(waitUntil([] { return tries().value(SimPin) == 2; }));
    EXPECT_EQ(lock(), SimPin);
    EXPECT_TRUE(succeeded(sim().call(u"Sim"_s, u"SendPin"_s, {u"1234"_s})));
    ASSERT_TRUE(reaches(Disabled));
    EXPECT_EQ(lock(), NoLock);
    EXPECT_EQ(tries().value(SimPin), 3U);
    ASSERT_TRUE(succeeded(modem().call(u"Modem"_s, u"Enable"_s, {true})));
    ASSERT_TRUE(reaches(Registered));
    EXPECT_TRUE(succeeded(createText(u"open"_s).call(u"Sms"_s, u"Send"_s)));
    EXPECT_EQ(accepted(u"text"_s), u"open"_s);
}

TEST_F(SimulatorBehindModemManager, aBlockedCardAsksForItsPuk)
{
    plugIn({u"--pin"_s, u"1234"_s, u"--puk"_s, u"87654321"_s});
    for (int i = 0; i < 3; ++i)
        sim().call(u"Sim"_s, u"SendPin"_s, {u"9999"_s});
    EXPECT_TRUE(waitUntil([] { return lock() == SimPuk; }));
    EXPECT_EQ(state(), Locked);
    EXPECT_EQ(sim().call(u"Sim"_s, u"SendPuk"_s, {u"00000000"_s, u"4321"_s}).errorName(),
              u"org.freedesktop.ModemManager1.Error.MobileEquipment.IncorrectPassword"_s);
    EXPECT_TRUE(waitUntil([] { return tries().value(SimPuk) == 9; }));
    EXPECT_TRUE(succeeded(sim().call(u"Sim"_s, u"SendPuk"_s, {u"87654321"_s, u"4321"_s})));
    EXPECT_TRUE(reaches(Disabled));
    EXPECT_EQ(lock(), NoLock);
}

TEST_F(SimulatorBehindModemManager, aModemThatIsUnpluggedSendsNoMore)
{
    plugInRegistered({u"--latency"_s, u"3600000"_s});
    const ModemObject message = createText(u"cut"_s);
    const QDBusPendingCallWatcher sending(message.callLater(u"Sms"_s, u"Send"_s));
    ASSERT_TRUE(waitUntil([this] { return control("count submitting") == "ok 1"; }));
    EXPECT_EQ(control("unplug"), "ok");
    ASSERT_TRUE(waitUntil([&] { return sending.isFinished(); }));
    EXPECT_TRUE(sending.isError());
    EXPECT_FALSE(succeeded(createText(u"gone"_s).call(u"Sms"_s, u"Send"_s)));
    EXPECT_EQ(simulator->messages().size(), 0);
}

TEST_F(SimulatorBehindModemManager, aModemLeavesTheBusAndComesBack)
{
    plugInRegistered();
    const QString before = modem().path();
    EXPECT_EQ(control("unplug"), "ok");
    ASSERT_TRUE(daemon->detach(deviceName()));
    EXPECT_EQ(daemon->modemPath(deviceName()), QString());
    ASSERT_TRUE(simulator->restart());
    const QString after = daemon->attach(deviceName(), simulator->socketPath());
    EXPECT_NE(after, QString());
    EXPECT_NE(after, before);
    ASSERT_TRUE(succeeded(modem().call(u"Modem"_s, u"Enable"_s, {true})));
    ASSERT_TRUE(reaches(Registered));
    EXPECT_TRUE(succeeded(createText(u"back"_s).call(u"Sms"_s, u"Send"_s)));
    EXPECT_EQ(accepted(u"text"_s), u"back"_s);
}

TEST_F(SimulatorBehindModemManager, aDaemonThatIsKilledFindsItsModemsWhenItIsBack)
{
    plugInRegistered({u"--latency"_s, u"3600000"_s});
    const QDBusPendingCallWatcher sending(createText(u"cut"_s).callLater(u"Sms"_s, u"Send"_s));
    ASSERT_TRUE(waitUntil([this] { return control("count submitting") == "ok 1"; }));
    ASSERT_TRUE(daemon->kill());
    EXPECT_FALSE(daemon->isRunning());
    ASSERT_TRUE(waitUntil([&] { return sending.isFinished(); }));
    EXPECT_TRUE(sending.isError());
    EXPECT_EQ(control("unplug"), "ok"); // it would be busy with the message for an hour
    ASSERT_TRUE(simulator->restart());
    ASSERT_TRUE(daemon->restart());
    EXPECT_TRUE(daemon->isRunning());
    EXPECT_EQ(state(), Disabled);
    ASSERT_TRUE(succeeded(modem().call(u"Modem"_s, u"Enable"_s, {true})));
    EXPECT_TRUE(reaches(Registered));
}

TEST_F(SimulatorBehindModemManager, whoMayNotUseItIsRefused)
{
    plugIn();
    daemon->setPermission(ModemManagerDaemon::Permission::Denied);
    const QDBusMessage refusal = modem().call(u"Modem"_s, u"Enable"_s, {true});
    daemon->setPermission(ModemManagerDaemon::Permission::Granted);
    EXPECT_EQ(refusal.errorName(), u"org.freedesktop.ModemManager1.Error.Core.Unauthorized"_s);
    EXPECT_EQ(state(), Disabled);
}

} // namespace norvane
