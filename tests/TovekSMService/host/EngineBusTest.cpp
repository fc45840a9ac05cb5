#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoreResults.h"

#include <QDBusPendingCall>
#include <QFile>
#include <QXmlStreamReader>

namespace norvane {

using namespace Qt::StringLiterals;

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
        : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"second"_s))
    {}
    SecondConnection(const SecondConnection &) = delete;
    SecondConnection &operator=(const SecondConnection &) = delete;
    ~SecondConnection() { QDBusConnection::disconnectFromBus(u"second"_s); }

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
        if (element == u"interface"_s) {
            isOurs = attribute("name") == u"com.tovek.SMService.SMSManager1"_s;
        } else if (isOurs && element == u"arg"_s) {
            const bool isOut = isSignal || attribute("direction") == u"out"_s;
            lines.last() +=
                (isOut ? u" out "_s : u" in "_s) + attribute("name") + u':' + attribute("type");
        } else if (isOurs && element != u"annotation"_s) {
            isSignal = element == u"signal"_s;
            lines << element + u' ' + attribute("name");
        }
    }
    EXPECT_FALSE(reader.hasError());
    lines.sort();
    return lines;
}

TEST_F(EngineOnBus, whatItTellsOfItselfIsWhatTheContractDeclares)
{
    const QDBusMessage answer = QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(u"com.tovek.SMService"_s, u"/com/tovek/SMService"_s,
                                       u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s));
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
    EXPECT_EQ(settings(), (WireSettings{0, QString(), 1, 1, u"COM1, 9600"_s}));
}

TEST_F(EngineOnBus, messagesAreTakenWhateverTheyHold)
{
    const QString many = QString(5000, u'€');
    const QList<WireRow> messages = {
        {QString(), QString(), QString()},
        {u"tomorrow"_s, u"call me"_s, u"a\tb\r\n\x01"_s},
        {u"2024-02-30T00:00:00"_s, QString(500, u'9'), many},
        {u"2024-05-01T12:00:00"_s, u"+34600"_s, u"\U0001F600 \u0627"_s},
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
    const QList<WireEntry> list = {{u"1"_s, u"a"_s}, {u"2"_s, u"b"_s}};
    call("AddSMSList", {QVariant::fromValue(list), u"2024-05-01T12:00:00"_s});
    call("AddSMSList", {QVariant::fromValue(QList<WireEntry>()), QString()});
    const QList<WireRow> rows = queue();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.at(0).phone, u"1"_s);
    EXPECT_EQ(rows.at(1).text, u"b"_s);
    EXPECT_EQ(rows.at(1).date, u"2024-05-01T12:00:00"_s);
}

TEST_F(EngineOnBus, editsAndDeletionsAreCarriedOutAndTheRestIsLeft)
{
    for (const char *const phone : {"1", "2", "3"})
        addSMS(QLatin1String(phone), u"old"_s, u"2024-05-01T12:00:00"_s);
    QList<WireRow> rows = queue();
    ASSERT_EQ(rows.size(), 3);
    rows[0].text = u"new"_s;
    call("UpdateQueue", {QVariant::fromValue(QList<WireRow>({rows.at(0)})),
                         QVariant::fromValue(QList<qlonglong>({rows.at(1).id}))});
    EXPECT_EQ(queue(), QList<WireRow>({rows.at(0), rows.at(2)}));
    EXPECT_EQ(callForNumber("GetQueueSize"), 2);
    call("ClearQueue");
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
}

TEST_F(EngineOnBus, settingsAreStoredAsTheyComeAndSurviveTheEngine)
{
    const WireSettings odd = {7, u"12 34"_s, 0, -5, u"no device ñ"_s};
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
        list.append({QString::number(i), u"text"_s});
    call("AddSMSList", {QVariant::fromValue(list), u"2024-05-01T12:00:00"_s});
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
        addSMS(u"since"_s, QString(), QString());
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
    EXPECT_EQ(qdbus_cast<QList<WireRow>>(anew.at(2)).constFirst().phone, u"since"_s);
}

TEST_F(EngineOnBus, theStateIsReportedToItsCallerAlone)
{
    addSMS(u"600"_s, QString(), QString());
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
    EXPECT_EQ(caller.heard, QStringList({u"EngineStatus 0"_s, u"SMSQueueChanged 1"_s}));
    call("GetEngineStatus", {}, second.bus);
    QCoreApplication::processEvents();
    EXPECT_EQ(other.heard, QStringList());

    // What concerns everyone is heard by everyone.
    setSettings(noDevice());
    call("StartEngine");
    EXPECT_TRUE(until([&] { return other.heard.size() >= 2 && caller.heard.size() >= 4; }));
    EXPECT_EQ(other.heard.constFirst(), u"EngineStatus 1"_s);
    EXPECT_TRUE(other.has(u"WarningError -2 /no/such/device"_s));
    EXPECT_EQ(caller.heard.mid(2), other.heard);
}

TEST_F(EngineOnBus, aMessageInDoubtIsToldWithItsWarningAlsoAfterAnotherRestart)
{
    stop();
    {
        Store store(storeFile());
        done(store.open());
        done(store.queue().add({{u"601"_s, u"more"_s}}, QString()));
        done(store.queue().begin({{given(store.queue().first())->id, std::nullopt, {}}}));
    }
    start(); // writes the failure down, with nobody there to hear it
    ASSERT_TRUE(until([&] { return callForNumber("GetQueueSize") == 0; }));
    stop();
    start();
    Listener listener(QDBusConnection::sessionBus());
    for (int round = 0; round < 2; ++round) {
        call("ReportState");
        ASSERT_TRUE(
            until([&] { return listener.heard.filter(u"EngineStatus"_s).size() == round + 1; }));
        call("GetEngineStatus");
        QCoreApplication::processEvents();
        EXPECT_EQ(listener.heard.filter(u"SMSSentFailed 601 more -39"_s).size(), 1);
        EXPECT_EQ(listener.heard
                      .filter(u"WarningError -39 no answer for the message to 601; "
                              "it may have been delivered"_s)
                      .size(),
                  1);
    }
}

TEST_F(EngineOnBus, failuresAndWarningsThatNobodyHeardAreToldToTheFirstWhoAsks)
{
    stop();
    {
        Store store(storeFile());
        done(store.open());
        done(store.queue().add({{u"600"_s, u"words"_s}}, QString()));
        done(store.queue().finish(given(store.queue().first())->id, -17, std::nullopt, u"then"_s,
                                  false));
        done(store.queue().add({{u"601"_s, u"more"_s}}, QString()));
        done(store.queue().begin({{given(store.queue().first())->id, std::nullopt, {}}}));
        done(store.settings().setDeviceSettings({0, QString(), 1, 1, u"/no/such/device, 9600"_s}));
        done(store.settings().setToRun(true));
    }
    start();
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    // The engine goes on coming up meanwhile, so the events of that may stand between.
    ASSERT_TRUE(until([&] {
        return listener.has(u"EngineStatus 1"_s) && listener.has(u"SMSQueueChanged 0"_s) &&
               listener.has(u"SMSSentFailed 601"_s) && listener.has(u"WarningError -39"_s) &&
               listener.has(u"WarningError -2"_s);
    }));
    EXPECT_EQ(listener.heard.filter(u"SMSSentFailed"_s),
              QStringList({u"SMSSentFailed 600 words -17"_s, u"SMSSentFailed 601 more -39"_s}));
    EXPECT_EQ(listener.heard.filter(u"WarningError -39"_s).size(), 1);
    EXPECT_EQ(listener.heard.filter(u"WarningError -2"_s).size(), 1);

    listener.heard.clear();
    call("ReportState");
    ASSERT_TRUE(until([&] { return listener.heard.size() >= 3; }));
    call("GetEngineStatus");
    QCoreApplication::processEvents();
    // What still stands is told again.
    EXPECT_EQ(listener.heard, QStringList({u"EngineStatus 1"_s, u"SMSQueueChanged 0"_s,
                                           u"WarningError -2 /no/such/device"_s}));
}

TEST_F(EngineOnBus, aChangeThatCameTooLateIsAnsweredAndTold)
{
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    ASSERT_TRUE(until([&] { return listener.heard.size() == 2; }));
    listener.heard.clear();
    const WireRow gone = {QString(), u"600"_s, u"new"_s, 4711};
    call("UpdateQueue",
         {QVariant::fromValue(QList<WireRow>({gone})), QVariant::fromValue(QList<qlonglong>())});
    ASSERT_TRUE(until([&] {
        return !listener.heard.filter(u"WarningError -9"_s).isEmpty() &&
               listener.heard.contains(u"SMSQueueChanged 0"_s);
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
    tried.parameter = u"somewhere"_s;
    EXPECT_EQ(result(), -3);
    tried.protocol = 2;
    EXPECT_EQ(result(), -40);
}

} // namespace

} // namespace norvane
