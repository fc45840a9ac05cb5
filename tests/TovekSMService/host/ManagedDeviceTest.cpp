#include "TovekSMService/host/DeviceProcess.h"
#include "TovekSMService/modem/manager/ManagerBus.h"
#include "TovekSMService/modem/manager/ManagerNames.h"
#include "support/ModemManagerDaemon.h"

#include <QDBusMetaType>
#include <QDir>
#include <QFile>
#include <QJsonObject>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString noonThen()
{
    return u"2020-05-01T12:00:00"_s;
}

/// The engine's program, ModemManager itself, and a simulated device behind that.
class ManagedDeviceProcess : public DeviceProcess
{
protected:
    static void SetUpTestSuite()
    {
        if (!ModemManagerDaemon::isInstalled())
            return;
        qDBusRegisterMetaType<ManagedInterfaces>();
        qDBusRegisterMetaType<ManagedObjects>();
        s_daemon = std::make_unique<ModemManagerDaemon>();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", s_daemon->address().toUtf8());
        // What the network refuses for a while is tried again soon.
        QDir().mkpath(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane"_s);
        QFile settings(settingsFile());
        ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
        settings.write("[Sending]\nAttempts=1\nFirstDelay=1\n");
    }
    static void TearDownTestSuite()
    {
        s_daemon.reset();
        QFile::remove(settingsFile());
    }
    void SetUp() override
    {
        if (!s_daemon)
            GTEST_SKIP() << "ModemManager is not installed";
        ASSERT_TRUE(s_daemon->isRunning());
    }
    void TearDown() override
    {
        if (!s_daemon)
            return;
        stop();
        s_daemon->setPermission(ModemManagerDaemon::Permission::Granted);
        if (!s_daemon->isRunning()) {
            EXPECT_TRUE(s_daemon->restart());
        }
        m_device.reset(); // what is still to be answered is over
        for (const QString &name : m_names)
            s_daemon->detach(name);
    }

    static QString settingsFile()
    {
        return qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane/TovekSMService.ini"_s;
    }

    /// Plugs a device in; the daemon has it then.
    void plugInManaged(const QStringList &options = {})
    {
        m_device = std::make_unique<RunningSimulator>(options, RunningSimulator::Port::Socket);
        ASSERT_TRUE(m_device->isReady());
        m_names.append(u"device%1"_s.arg(++s_devices));
        ASSERT_FALSE(s_daemon->attach(m_names.constLast(), m_device->socketPath()).isEmpty());
    }
    void unplug() { ASSERT_TRUE(s_daemon->detach(m_names.constLast())); }
    void plugInAgain()
    {
        ASSERT_FALSE(s_daemon->attach(m_names.constLast(), m_device->socketPath()).isEmpty());
    }

    /// Sets the modem manager's device and a PIN, and puts them in force.
    void useManaged(const QString &pin = {}, const QString &parameter = u"ModemManager"_s,
                    int mode = 1, int protocol = 1)
    {
        m_listener->heard.clear();
        EXPECT_TRUE(setSettings({0, pin, mode, protocol, parameter}));
        call("ApplySettings");
    }
    /// Brings the engine up with a device of these options.
    void begin(const QStringList &options = {}, const QString &pin = {})
    {
        plugInManaged(options);
        startHeard();
        useManaged(pin);
        call("StartEngine");
    }
    void beginReady(const QStringList &options = {}, const QString &pin = {})
    {
        begin(options, pin);
        ASSERT_TRUE(hears(u"DeviceInfo "_s));
    }

    QByteArray tellDevice(const QByteArray &command) const
    {
        ControlClient client(m_device->controlPath());
        return client.ask(command);
    }
    bool isSubmitting() const
    {
        return until([this] { return tellDevice("count submitting").contains('1'); });
    }

    /// What the network got for a number, its parts put together.
    QString sentTo(const QString &phone) const
    {
        QString text;
        for (const QJsonObject &part : m_device->messages())
            if (part.value(u"number"_s) == phone)
                text += part.value(u"text"_s).toString();
        return text;
    }
    qsizetype sentParts() const { return m_device->messages().size(); }

    /// Objects of the daemon: messages that wait or were left there.
    static ManagedObjects objects()
    {
        QDBusMessage question = QDBusMessage::createMethodCall(
            Manager::service, Manager::path, Manager::objectManager, u"GetManagedObjects"_s);
        return qdbus_cast<ManagedObjects>(
            s_daemon->connection().call(question, QDBus::Block, hangMs).arguments().value(0));
    }
    static std::optional<int> pinTries()
    {
        const std::optional<ManagedDevice> device = ManagedDevice::find(objects(), {});
        return device ? device->pinTries() : std::nullopt;
    }
    static qsizetype messagesOfDaemon()
    {
        const std::optional<ManagedDevice> device = ManagedDevice::find(objects(), {});
        if (!device)
            return -1;
        QDBusMessage question = QDBusMessage::createMethodCall(Manager::service, device->path(),
                                                               Manager::messaging, u"List"_s);
        return qdbus_cast<QList<QDBusObjectPath>>(
                   s_daemon->connection().call(question, QDBus::Block, hangMs).arguments().value(0))
            .size();
    }

    static inline std::unique_ptr<ModemManagerDaemon> s_daemon;
    static inline int s_devices = 0;
    QStringList m_names;
};

TEST_F(ManagedDeviceProcess, aDeviceComesUpAndItsDetailsAreTold)
{
    beginReady({u"--imei"_s, u"490154203237518"_s, u"--manufacturer"_s, u"Maker"_s});
    const QString info = m_listener->heard.filter(u"DeviceInfo "_s).constFirst();
    EXPECT_TRUE(info.contains(u"Maker"_s)) << info.toStdString();
    EXPECT_TRUE(info.contains(u"490154203237518"_s)) << info.toStdString();
    EXPECT_TRUE(info.contains(u"(home)"_s)) << info.toStdString();
}

TEST_F(ManagedDeviceProcess, whateverModeAndProtocolTheDialogSaysTheManagersDeviceIsUsed)
{
    plugInManaged({u"--imei"_s, u"490154203237518"_s});
    startHeard();
    call("StartEngine");
    for (const auto &[mode, protocol] : {std::pair(0, 0), std::pair(2, 1), std::pair(3, 3)}) {
        useManaged({}, u"modemmanager, 490154203237518"_s, mode, protocol);
        EXPECT_TRUE(hears(u"DeviceInfo "_s)) << mode << ' ' << protocol;
    }
}

TEST_F(ManagedDeviceProcess, aHundredMessagesLeaveOnceEachInTheirOrder)
{
    beginReady();
    QList<WireEntry> entries;
    for (int i = 0; i < 100; ++i)
        entries.append({u"6001%1"_s.arg(i, 5, 10, QChar(u'0')), u"number %1"_s.arg(i)});
    call("AddSMSList", {QVariant::fromValue(entries), noonThen()});
    ASSERT_TRUE(until([this] { return count(u"SMSSent 6"_s) == 100; }));
    const QList<QJsonObject> sent = m_device->messages();
    ASSERT_EQ(sent.size(), 100);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(sent.at(i).value(u"number"_s).toString(), entries.at(i).phone);
    EXPECT_TRUE(until([] { return messagesOfDaemon() == 0; })) << "each is deleted behind itself";
}

TEST_F(ManagedDeviceProcess, longMessagesAndAllLettersArriveWhole)
{
    beginReady();
    const QString longText = QString(u"línea ñ € "_s).repeated(40);
    const QString otherText = u"Привет, мир 😀 "_s.repeated(12);
    const QString allSorts = u"a\nb\\{[~]}|^ <b>&\"'"_s;
    addSMS(u"600000001"_s, longText, noonThen());
    addSMS(u"600000002"_s, otherText, noonThen());
    addSMS(u"+34600000003"_s, allSorts, noonThen());
    ASSERT_TRUE(until([this] { return count(u"SMSSent "_s) == 3; }));
    EXPECT_EQ(sentTo(u"600000001"_s), longText);
    EXPECT_EQ(sentTo(u"600000002"_s), otherText);
    EXPECT_EQ(sentTo(u"+34600000003"_s), allSorts);
}

TEST_F(ManagedDeviceProcess, theRightPinUnlocksTheSim)
{
    beginReady({u"--pin"_s, u"4711"_s}, u"4711"_s);
    addSMS(u"600000001"_s, u"Hola"_s, noonThen());
    EXPECT_TRUE(hears(u"SMSSent 600000001 "_s));
    EXPECT_EQ(count(u"WarningError"_s), 0);
}

TEST_F(ManagedDeviceProcess, aWrongPinCostsOneTryWhateverComesAfter)
{
    begin({u"--pin"_s, u"4711"_s}, u"1111"_s);
    ASSERT_TRUE(hears(u"WarningError -27"_s));
    EXPECT_EQ(pinTries(), 2);
    for (int times = 0; times < 2; ++times) {
        restart();
        ASSERT_TRUE(hears(u"WarningError -27"_s));
    }
    useManaged(u"1111"_s);
    ASSERT_TRUE(hears(u"WarningError -27"_s));
    EXPECT_EQ(pinTries(), 2);

    // A changed PIN is tried once; with the last try nothing is, not even the right one.
    useManaged(u"2222"_s);
    ASSERT_TRUE(hears(u"WarningError -27"_s));
    useManaged(u"4711"_s);
    ASSERT_TRUE(hears(u"WarningError -30"_s));
    EXPECT_EQ(pinTries(), 1);
}

TEST_F(ManagedDeviceProcess, aSimThatAsksForItsPinAndGetsNoneIsToldOf)
{
    begin({u"--pin"_s, u"4711"_s});
    EXPECT_TRUE(hears(u"WarningError -30"_s));
    EXPECT_EQ(pinTries(), 3);
}

TEST_F(ManagedDeviceProcess, aSimThatAsksForItsPukIsLeftAlone)
{
    plugInManaged({u"--pin"_s, u"4711"_s});
    const std::optional<ManagedDevice> device = ManagedDevice::find(objects(), {});
    ASSERT_TRUE(device);
    for (int times = 0; times < 3; ++times) {
        QDBusMessage wrong = QDBusMessage::createMethodCall(Manager::service, device->simPath(),
                                                            Manager::sim, u"SendPin"_s);
        wrong << u"0000"_s;
        s_daemon->connection().call(wrong, QDBus::Block, hangMs);
    }
    startHeard();
    useManaged(u"4711"_s);
    call("StartEngine");
    EXPECT_TRUE(hears(u"WarningError -31"_s));
}

TEST_F(ManagedDeviceProcess, whatTheNetworkRefusesFailsWithItsCode)
{
    beginReady({u"--fail-every"_s, u"1"_s, u"--fail-code"_s, u"1"_s});
    addSMS(u"600000001"_s, u"Hola"_s, noonThen());
    EXPECT_TRUE(hears(u"SMSSentFailed 600000001 Hola -36"_s))
        << qPrintable(m_listener->heard.join(u'\n'));
}

TEST_F(ManagedDeviceProcess, aNetworkThatRefusesTheRequestForAReportGetsTheMessageWithoutIt)
{
    beginReady({u"--refuse-report-request"_s, u"50"_s});
    addSMS(u"600000001"_s, u"one"_s, noonThen());
    addSMS(u"600000002"_s, u"two"_s, noonThen());
    ASSERT_TRUE(until([this] { return count(u"SMSSent "_s) == 2; }));
    EXPECT_EQ(sentParts(), 2);
}

TEST_F(ManagedDeviceProcess, aReportTellsThatAMessageIsOnThePhone)
{
    beginReady();
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    addSMS(u"600111333"_s, QString(400, u'x'), noonThen());
    ASSERT_TRUE(until([this] { return count(u"SMSSent "_s) == 2; }));
    ASSERT_TRUE(until([this] { return count(u"DeliveryChanged "_s) == 2; }));
    for (const QString &change : m_listener->heard.filter(u"DeliveryChanged "_s))
        EXPECT_TRUE(change.contains(u" delivered 20"_s)) << change.toStdString();
    EXPECT_TRUE(until([] { return messagesOfDaemon() == 0; }));
}

TEST_F(ManagedDeviceProcess, whatCustomersAnswerIsKeptAndDeleted)
{
    beginReady();
    const QStringList answers = {u"Sí, gracias"_s, u"Да 😀"_s, u"<b>No</b>"_s};
    for (const QString &answer : answers) {
        const QByteArray told =
            tellDevice("deliver {\"from\":\"+34600111222\",\"text\":\"" + answer.toUtf8() + "\"}");
        EXPECT_TRUE(told.startsWith("ok")) << told.constData();
        // One at a time: the daemon overlooks what is announced while it reads.
        ASSERT_TRUE(until([&] { return !m_listener->heard.filter(answer).isEmpty(); }));
        ASSERT_TRUE(until([] { return messagesOfDaemon() == 0; }));
    }
    EXPECT_EQ(count(u"Received "_s), 3);
}

TEST_F(ManagedDeviceProcess, whatWaitedForTheEngineIsReadOnce)
{
    plugInManaged();
    EXPECT_TRUE(tellDevice(R"(deliver {"from":"+34600111222","text":"Hola"})").startsWith("ok"));
    startHeard();
    useManaged();
    call("StartEngine");
    ASSERT_TRUE(hears(u"Received "_s));
    restart();
    ASSERT_TRUE(hears(u"DeviceInfo "_s));
    EXPECT_EQ(count(u"Received "_s), 0);
}

TEST_F(ManagedDeviceProcess, aDeviceThatIsPulledOutInTheMiddleLeavesTheMessageInDoubt)
{
    beginReady({u"--latency"_s, u"600000"_s});
    addSMS(u"600000001"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(isSubmitting());
    m_device.reset();
    EXPECT_TRUE(hears(u"SMSSentFailed 600000001 Hola -39"_s));
}

TEST_F(ManagedDeviceProcess, aManagerThatDiesInTheMiddleLeavesTheMessageInDoubtAndComesBack)
{
    beginReady({u"--latency"_s, u"600000"_s});
    addSMS(u"600000001"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(isSubmitting());
    ASSERT_TRUE(s_daemon->kill());
    ASSERT_TRUE(hears(u"SMSSentFailed 600000001 Hola -39"_s));
    m_listener->heard.clear();
    m_device->process().kill(); // it would go on answering
    m_device->process().waitForFinished();
    ASSERT_TRUE(m_device->restart());
    ASSERT_TRUE(s_daemon->restart());
    ASSERT_TRUE(hears(u"DeviceInfo "_s));
    EXPECT_EQ(callForNumber("GetQueueSize"), 0) << "what is in doubt is not sent again";
    EXPECT_EQ(tellDevice("count submitting"), "ok 0");
}

TEST_F(ManagedDeviceProcess, aManagerThatDiesAtRestComesBackByItself)
{
    beginReady();
    m_listener->heard.clear();
    ASSERT_TRUE(s_daemon->kill());
    ASSERT_TRUE(s_daemon->restart());
    ASSERT_TRUE(hears(u"DeviceInfo "_s)) << qPrintable(m_listener->heard.join(u'\n'));
    addSMS(u"600000001"_s, u"Hola"_s, noonThen());
    EXPECT_TRUE(hears(u"SMSSent 600000001 "_s));
}

TEST_F(ManagedDeviceProcess, aDeviceThatAnotherProgramKeepsForItselfComesBackByItself)
{
    beginReady();
    m_listener->heard.clear();
    unplug();
    EXPECT_TRUE(hears(u"WarningError -5"_s)) << qPrintable(m_listener->heard.join(u'\n'));
    plugInAgain();
    EXPECT_TRUE(hears(u"DeviceInfo "_s)) << qPrintable(m_listener->heard.join(u'\n'));
}

TEST_F(ManagedDeviceProcess, aDeviceThatAnotherProgramSwitchesOffIsSwitchedOnAgain)
{
    beginReady();
    m_listener->heard.clear();
    QDBusMessage off = QDBusMessage::createMethodCall(
        Manager::service, s_daemon->modemPath(m_names.constLast()), Manager::modem, u"Enable"_s);
    off << false;
    EXPECT_EQ(s_daemon->connection().call(off, QDBus::Block, hangMs).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_TRUE(hears(u"WarningError -5"_s)) << qPrintable(m_listener->heard.join(u'\n'));
    EXPECT_TRUE(hears(u"DeviceInfo "_s)) << qPrintable(m_listener->heard.join(u'\n'));
}

TEST_F(ManagedDeviceProcess, anAccountThatMayNotUseTheDeviceIsToldSo)
{
    plugInManaged();
    s_daemon->setPermission(ModemManagerDaemon::Permission::Denied);
    startHeard();
    useManaged();
    call("StartEngine");
    ASSERT_TRUE(hears(u"WarningError -5"_s)) << qPrintable(m_listener->heard.join(u'\n'));
    EXPECT_TRUE(m_listener->heard.filter(u"WarningError -5"_s)
                    .constFirst()
                    .contains(u"doesn't let this account use the device"_s));
}

TEST_F(ManagedDeviceProcess, aPinIsNotUsedUpByAnAccountThatMayNotGiveIt)
{
    plugInManaged({u"--pin"_s, u"4711"_s});
    s_daemon->setPermission(ModemManagerDaemon::Permission::Denied);
    startHeard();
    useManaged(u"4711"_s);
    call("StartEngine");
    ASSERT_TRUE(hears(u"WarningError -5"_s)) << qPrintable(m_listener->heard.join(u'\n'));
    s_daemon->setPermission(ModemManagerDaemon::Permission::Granted);
    useManaged(u"4711"_s);
    EXPECT_TRUE(hears(u"DeviceInfo "_s)) << qPrintable(m_listener->heard.join(u'\n'));
}

TEST_F(ManagedDeviceProcess, aMachineWithoutAModemManagerIsToldSo)
{
    ASSERT_TRUE(s_daemon->kill());
    startHeard();
    useManaged();
    call("StartEngine");
    ASSERT_TRUE(hears(u"WarningError -2"_s)) << qPrintable(m_listener->heard.join(u'\n'));
    EXPECT_TRUE(m_listener->heard.filter(u"WarningError -2"_s)
                    .constFirst()
                    .contains(u"no modem manager runs on this machine"_s));
}

TEST_F(ManagedDeviceProcess, aTestOfTheDeviceAnswers)
{
    begin();
    call("StopEngine");
    EXPECT_EQ(callForNumber("TestDevice"), 1);
}

} // namespace

} // namespace norvane
