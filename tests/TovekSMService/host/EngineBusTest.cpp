#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/Store.h"

#include <QDBusPendingCall>
#include <QFile>
#include <QXmlStreamReader>

namespace {

class EngineOnBus : public EngineProcess
{
protected:
    EngineOnBus() { start(); }
};

/// A second program on the same bus.
class SecondConnection
{
public:
    SecondConnection()
        : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("second")))
    {}
    SecondConnection(const SecondConnection &) = delete;
    SecondConnection &operator=(const SecondConnection &) = delete;
    ~SecondConnection() { QDBusConnection::disconnectFromBus(QStringLiteral("second")); }

    QDBusConnection bus;
};

/// Every method and signal of the engine's interface with its arguments, one a line.
QStringList declarations(const QString &xml)
{
    QXmlStreamReader reader(xml);
    const auto attribute = [&reader](const char *name) {
        return reader.attributes().value(QLatin1String(name)).toString();
    };
    QStringList lines;
    bool isOurs = false;
    bool isSignal = false;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QString element = reader.name().toString();
        if (element == QStringLiteral("interface")) {
            isOurs = attribute("name") == QStringLiteral("com.tovek.SMService.SMSManager1");
        } else if (isOurs && element == QStringLiteral("arg")) {
            const bool isOut = isSignal || attribute("direction") == QStringLiteral("out");
            lines.last() += (isOut ? QStringLiteral(" out ") : QStringLiteral(" in ")) +
                            attribute("name") + u':' + attribute("type");
        } else if (isOurs && element != QStringLiteral("annotation")) {
            isSignal = element == QStringLiteral("signal");
            lines << element + u' ' + attribute("name");
        }
    }
    EXPECT_FALSE(reader.hasError());
    lines.sort();
    return lines;
}

TEST_F(EngineOnBus, whatItTellsOfItselfIsWhatTheContractDeclares)
{
    const QDBusMessage answer = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
        QStringLiteral("com.tovek.SMService"), QStringLiteral("/com/tovek/SMService"),
        QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect")));
    ASSERT_EQ(answer.type(), QDBusMessage::ReplyMessage);
    QFile contract(QStringLiteral(NORVANE_SOURCE_DIR "/src/contract/com.tovek.SMService.xml"));
    ASSERT_TRUE(contract.open(QIODevice::ReadOnly));
    const QStringList declared = declarations(QString::fromUtf8(contract.readAll()));
    EXPECT_EQ(declared.size(), 18 + 7);
    const QStringList told = declarations(answer.arguments().constFirst().toString());
    EXPECT_EQ(told.join(u'\n').toStdString(), declared.join(u'\n').toStdString());
}

TEST_F(EngineOnBus, aNewOneIsStoppedEmptyAndProposesTheFirstPort)
{
    EXPECT_EQ(callForNumber("GetEngineStatus"), 0);
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
    EXPECT_TRUE(queue().isEmpty());
    EXPECT_EQ(settings(), (WireSettings{0, QString(), 1, 1, QStringLiteral("COM1, 9600")}));
}

TEST_F(EngineOnBus, messagesAreTakenWhateverTheyHold)
{
    const QString many = QString(5000, u'€');
    const QList<WireRow> messages = {
        {QString(), QString(), QString()},
        {QStringLiteral("tomorrow"), QStringLiteral("call me"), QStringLiteral("a\tb\r\n\x01")},
        {QStringLiteral("2024-02-30T00:00:00"), QString(500, u'9'), many},
        {QStringLiteral("2024-05-01T12:00:00"), QStringLiteral("+34600"),
         QStringLiteral("\U0001F600 \u0627")},
    };
    for (const WireRow &message : messages)
        addSMS(message.phone, message.text, message.date);
    EXPECT_EQ(callForNumber("GetQueueSize"), 4);
    QList<WireRow> rows = queue();
    ASSERT_EQ(rows.size(), 4);
    for (WireRow &row : rows) {
        EXPECT_GT(row.id, 0);
        row.id = 0;
    }
    EXPECT_EQ(rows, messages);
}

TEST_F(EngineOnBus, aListIsQueuedInItsOrder)
{
    const QList<WireEntry> list = {{QStringLiteral("1"), QStringLiteral("a")},
                                   {QStringLiteral("2"), QStringLiteral("b")}};
    call("AddSMSList", {QVariant::fromValue(list), QStringLiteral("2024-05-01T12:00:00")});
    call("AddSMSList", {QVariant::fromValue(QList<WireEntry>()), QString()});
    const QList<WireRow> rows = queue();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.at(0).phone, QStringLiteral("1"));
    EXPECT_EQ(rows.at(1).text, QStringLiteral("b"));
    EXPECT_EQ(rows.at(1).date, QStringLiteral("2024-05-01T12:00:00"));
}

TEST_F(EngineOnBus, editsAndDeletionsAreCarriedOutAndTheRestIsLeft)
{
    for (const char *const phone : {"1", "2", "3"})
        addSMS(QLatin1String(phone), QStringLiteral("old"), QStringLiteral("2024-05-01T12:00:00"));
    QList<WireRow> rows = queue();
    ASSERT_EQ(rows.size(), 3);
    rows[0].text = QStringLiteral("new");
    call("UpdateQueue", {QVariant::fromValue(QList<WireRow>({rows.at(0)})),
                         QVariant::fromValue(QList<qlonglong>({rows.at(1).id}))});
    EXPECT_EQ(queue(), QList<WireRow>({rows.at(0), rows.at(2)}));
    EXPECT_EQ(callForNumber("GetQueueSize"), 2);
    call("ClearQueue");
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
}

TEST_F(EngineOnBus, settingsAreStoredAsTheyComeAndSurviveTheEngine)
{
    const WireSettings odd = {7, QStringLiteral("12 34"), 0, -5, QStringLiteral("no device ñ")};
    EXPECT_TRUE(setSettings(odd));
    EXPECT_EQ(settings(), odd);
    call("ApplySettings");
    kill();
    start();
    EXPECT_EQ(settings(), odd);
}

TEST_F(EngineOnBus, aLargeQueueComesInPagesOfOneMoment)
{
    QList<WireEntry> list;
    for (int i = 0; i < 9000; ++i)
        list.append({QString::number(i), QStringLiteral("text")});
    call("AddSMSList", {QVariant::fromValue(list), QStringLiteral("2024-05-01T12:00:00")});
    const SecondConnection second;

    QList<WireRow> received;
    qulonglong snapshot = 0;
    for (const int expected : {4000, 4000, 1000}) {
        const QVariantList page = call("GetQueue", {snapshot, uint(received.size())}).arguments();
        EXPECT_TRUE(snapshot == 0 || snapshot == page.at(0).toULongLong());
        snapshot = page.at(0).toULongLong();
        EXPECT_EQ(page.at(1).toUInt(), 9000u);
        const auto rows = qdbus_cast<QList<WireRow>>(page.at(2));
        EXPECT_EQ(rows.size(), expected);
        received += rows;
        // The queue goes on changing, and others fetch it.
        addSMS(QStringLiteral("since"), QString(), QString());
        const QVariantList others =
            call("GetQueue", {qulonglong(0), uint(0)}, second.bus).arguments();
        EXPECT_NE(others.at(0).toULongLong(), snapshot);
        EXPECT_GT(others.at(1).toUInt(), 9000u);
    }
    for (int i = 0; i < 9000; ++i)
        ASSERT_EQ(received.at(i).phone, QString::number(i));

    // The snapshot has ended: who asks on gets a new one from its beginning.
    const QVariantList anew = call("GetQueue", {snapshot, uint(8000)}).arguments();
    EXPECT_NE(anew.at(0).toULongLong(), snapshot);
    EXPECT_EQ(anew.at(1).toUInt(), 9003u);
    EXPECT_EQ(qdbus_cast<QList<WireRow>>(anew.at(2)).constFirst().phone, QStringLiteral("since"));
}

TEST_F(EngineOnBus, theStateIsReportedToItsCallerAlone)
{
    addSMS(QStringLiteral("600"), QString(), QString());
    Listener caller(QDBusConnection::sessionBus());
    const SecondConnection second;
    Listener other(second.bus);
    // What the call above raised has arrived by the time that these are answered.
    call("GetEngineStatus");
    call("GetEngineStatus", {}, second.bus);
    QCoreApplication::processEvents();
    caller.heard.clear();
    other.heard.clear();

    call("ReportState");
    ASSERT_TRUE(until([&] { return caller.heard.size() == 2; }));
    EXPECT_EQ(caller.heard,
              QStringList({QStringLiteral("EngineStatus 0"), QStringLiteral("SMSQueueChanged 1")}));
    call("GetEngineStatus", {}, second.bus);
    QCoreApplication::processEvents();
    EXPECT_EQ(other.heard, QStringList());

    // What concerns everyone is heard by everyone.
    setSettings(noDevice());
    call("StartEngine");
    EXPECT_TRUE(until([&] { return other.heard.size() >= 2 && caller.heard.size() >= 4; }));
    EXPECT_EQ(other.heard.constFirst(), QStringLiteral("EngineStatus 1"));
    EXPECT_TRUE(other.has(QStringLiteral("WarningError -2 /no/such/device")));
    EXPECT_EQ(caller.heard.mid(2), other.heard);
}

TEST_F(EngineOnBus, aMessageInDoubtIsToldWithItsWarningAlsoAfterAnotherRestart)
{
    stop();
    {
        Store store(storeFile());
        store.add({{QStringLiteral("601"), QStringLiteral("more")}}, QString());
        store.beginPart(store.first()->id, std::nullopt, {});
    }
    start(); // writes the failure down, with nobody there to hear it
    ASSERT_TRUE(until([&] { return callForNumber("GetQueueSize") == 0; }));
    stop();
    start();
    Listener listener(QDBusConnection::sessionBus());
    for (int round = 0; round < 2; ++round) {
        call("ReportState");
        ASSERT_TRUE(until([&] {
            return listener.heard.filter(QStringLiteral("EngineStatus")).size() == round + 1;
        }));
        call("GetEngineStatus");
        QCoreApplication::processEvents();
        EXPECT_EQ(listener.heard.filter(QStringLiteral("SMSSentFailed 601 more -39")).size(), 1);
        EXPECT_EQ(listener.heard
                      .filter(QStringLiteral("WarningError -39 no answer for the message to 601; "
                                             "it may have been delivered"))
                      .size(),
                  1);
    }
}

TEST_F(EngineOnBus, failuresAndWarningsThatNobodyHeardAreToldToTheFirstWhoAsks)
{
    stop();
    {
        Store store(storeFile());
        store.add({{QStringLiteral("600"), QStringLiteral("words")}}, QString());
        store.finish(store.first()->id, -17, std::nullopt, QStringLiteral("then"), false);
        store.add({{QStringLiteral("601"), QStringLiteral("more")}}, QString());
        store.beginPart(store.first()->id, std::nullopt, {});
        store.setDeviceSettings({0, QString(), 1, 1, QStringLiteral("/no/such/device, 9600")});
        store.setToRun(true);
    }
    start();
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    // The engine goes on coming up meanwhile, so the events of that may stand between.
    ASSERT_TRUE(until([&] {
        return listener.has(QStringLiteral("EngineStatus 1")) &&
               listener.has(QStringLiteral("SMSQueueChanged 0")) &&
               listener.has(QStringLiteral("SMSSentFailed 601")) &&
               listener.has(QStringLiteral("WarningError -39")) &&
               listener.has(QStringLiteral("WarningError -2"));
    }));
    EXPECT_EQ(listener.heard.filter(QStringLiteral("SMSSentFailed")),
              QStringList({QStringLiteral("SMSSentFailed 600 words -17"),
                           QStringLiteral("SMSSentFailed 601 more -39")}));
    EXPECT_EQ(listener.heard.filter(QStringLiteral("WarningError -39")).size(), 1);
    EXPECT_EQ(listener.heard.filter(QStringLiteral("WarningError -2")).size(), 1);

    listener.heard.clear();
    call("ReportState");
    ASSERT_TRUE(until([&] { return listener.heard.size() >= 3; }));
    call("GetEngineStatus");
    QCoreApplication::processEvents();
    // What still stands is told again.
    EXPECT_EQ(listener.heard,
              QStringList({QStringLiteral("EngineStatus 1"), QStringLiteral("SMSQueueChanged 0"),
                           QStringLiteral("WarningError -2 /no/such/device")}));
}

TEST_F(EngineOnBus, aChangeThatCameTooLateIsAnsweredAndTold)
{
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    ASSERT_TRUE(until([&] { return listener.heard.size() == 2; }));
    listener.heard.clear();
    const WireRow gone = {QString(), QStringLiteral("600"), QStringLiteral("new"), 4711};
    call("UpdateQueue",
         {QVariant::fromValue(QList<WireRow>({gone})), QVariant::fromValue(QList<qlonglong>())});
    ASSERT_TRUE(until([&] {
        return !listener.heard.filter(QStringLiteral("WarningError -9")).isEmpty() &&
               listener.heard.contains(QStringLiteral("SMSQueueChanged 0"));
    }));
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
}

TEST_F(EngineOnBus, aDeviceTestGivesTheCodeOfWhatStandsInTheWay)
{
    WireSettings tried = noDevice();
    const auto result = [&] {
        EXPECT_TRUE(setSettings(tried));
        QDBusConnection::sessionBus().call(request("ApplySettings", {}));
        return callForNumber("TestDevice");
    };
    EXPECT_EQ(result(), -2);
    tried.parameter = QStringLiteral("somewhere");
    EXPECT_EQ(result(), -3);
    tried.protocol = 2;
    EXPECT_EQ(result(), -40);
}

} // namespace
