#include "TovekSMService/host/DeviceProcess.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString noonThen()
{
    return u"2020-05-01T12:00:00"_s;
}

QString bytesOf(const QString &file)
{
    QFile read(file);
    return read.open(QIODevice::ReadOnly) ? QString::fromUtf8(read.readAll()) : QString();
}

/// The engine's program and a simulated device whose network answers.
class EngineMail : public DeviceProcess
{
protected:
    ~EngineMail() override { QFile::remove(settingsFile()); }

    static QString settingsFile()
    {
        return qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane/TovekSMService.ini"_s;
    }
    static void set(const QString &text)
    {
        QDir().mkpath(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane"_s);
        QFile file(settingsFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_GT(file.write(text.toUtf8()), 0);
    }
    /// Brings the engine up and to work with a device of these options.
    void begin(const QStringList &options = {})
    {
        plugIn(options);
        startHeard();
        use(m_device->link());
        call("StartEngine");
    }
    QByteArray tellDevice(const QByteArray &command) const
    {
        ControlClient client(m_device->controlPath());
        return client.ask(command);
    }
    void deliver(const QByteArray &json) const
    {
        EXPECT_TRUE(tellDevice("deliver " + json).startsWith("ok"));
    }
    QByteArray waiting(const QByteArray &memory) const { return tellDevice("memory " + memory); }
    bool isEmptied(const QByteArray &memory) const
    {
        return until([&] { return waiting(memory).startsWith("ok 0 "); });
    }

    static QDBusMessage ask(const char *operation, const QVariantList &arguments = {})
    {
        QDBusMessage question = QDBusMessage::createMethodCall(
            u"com.tovek.SMService"_s, u"/com/tovek/SMService"_s, u"com.tovek.SMService.Messages1"_s,
            QLatin1String(operation));
        question.setArguments(arguments);
        return QDBusConnection::sessionBus().call(question, QDBus::Block, hangMs);
    }
    /// A page of rows, each with its fields parted by a bar.
    static QStringList rows(const QDBusMessage &answer)
    {
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
        QStringList rows;
        const auto list = answer.arguments().value(0).value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QStringList fields;
            list.beginStructure();
            while (!list.atEnd())
                fields << list.asVariant().toString();
            list.endStructure();
            rows << fields.join(u'|');
        }
        list.endArray();
        return rows;
    }
    static QStringList page(const char *operation, const QString &text = {}, uint offset = 0,
                            uint limit = 0)
    {
        return rows(ask(operation, {QString(), QString(), text, offset, limit}));
    }
    static QStringList optOuts() { return rows(ask("GetOptOuts")); }
    /// The last two fields of the only line of --report.
    static QString deliveryInReport()
    {
        const Ended report = run({u"--report"_s});
        const QStringList fields = report.out.trimmed().split(u'\t');
        EXPECT_EQ(report.exitCode, 0) << report.err.toStdString();
        return fields.size() == 9 ? fields[7] + u'|' + fields[8].left(2)
                                  : fields.value(7) + u'|'; // the end of a line is trimmed
    }
    static QJsonObject status()
    {
        return QJsonDocument::fromJson(run({u"--status"_s, u"--json"_s}).out.toUtf8()).object();
    }
    static void addList(const QList<WireEntry> &entries)
    {
        call("AddSMSList", {QVariant::fromValue(entries), noonThen()});
    }
};

TEST_F(EngineMail, aReportTellsThatAMessageIsOnThePhone)
{
    begin();
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(hears(u"DeliveryChanged "_s));
    const QString change = m_listener->heard.filter(u"DeliveryChanged "_s).constFirst();
    EXPECT_TRUE(change.contains(u" delivered 20"_s)) << change.toStdString();
    const QStringList outcomes = page("GetOutcomes");
    ASSERT_EQ(outcomes.size(), 1);
    EXPECT_TRUE(outcomes[0].startsWith(change.section(u' ', 1, 1) + u'|'));
    EXPECT_TRUE(outcomes[0].contains(u"|600111222|Hola|1|"_s)) << outcomes[0].toStdString();
    EXPECT_TRUE(outcomes[0].contains(u"|delivered|20"_s)) << outcomes[0].toStdString();
    EXPECT_EQ(deliveryInReport(), u"delivered|20"_s);
    EXPECT_EQ(status().value(u"delivered"_s).toInt(), 1);
    EXPECT_EQ(status().value(u"undelivered"_s).toInt(), 0);
}

TEST_F(EngineMail, aMessageIsDeliveredWhenAllItsPartsAre)
{
    begin({u"--report"_s, u"never"_s});
    addSMS(u"600111222"_s, QString(300, u'x'), noonThen());
    ASSERT_TRUE(hears(u"SMSSent "_s));
    EXPECT_EQ(deliveryInReport(), u"pending|"_s);
    EXPECT_EQ(tellDevice("report 0 0"), "ok");
    EXPECT_EQ(tellDevice("count sent"), "ok 2");
    EXPECT_EQ(deliveryInReport(), u"pending|"_s);
    EXPECT_EQ(tellDevice("report 1 0"), "ok");
    ASSERT_TRUE(hears(u"DeliveryChanged "_s));
    EXPECT_EQ(deliveryInReport(), u"delivered|20"_s);
    EXPECT_EQ(count(u"DeliveryChanged"_s), 1);
}

TEST_F(EngineMail, aRefusalIsKeptAsOne)
{
    begin({u"--report-status"_s, u"70"_s}); // the validity period is over
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(hears(u"DeliveryChanged "_s));
    EXPECT_EQ(deliveryInReport(), u"refused|"_s);
    EXPECT_EQ(status().value(u"undelivered"_s).toInt(), 1);
}

TEST_F(EngineMail, aTemporaryStateIsFollowedByTheFinalOne)
{
    begin({u"--report-first"_s, u"33"_s});
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(until([&] { return m_listener->heard.filter(u" delivered "_s).size() == 1; }));
    EXPECT_EQ(deliveryInReport(), u"delivered|20"_s);
}

TEST_F(EngineMail, aReportThatComesTwiceChangesNothing)
{
    begin({u"--report"_s, u"twice"_s});
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(hears(u"DeliveryChanged "_s));
    deliver(R"({"from":"+34600","text":"behind both"})");
    ASSERT_TRUE(hears(u"Received "_s));
    EXPECT_EQ(count(u"DeliveryChanged"_s), 1);
}

TEST_F(EngineMail, reportsInTheirOwnMemoryAreReadAndDeleted)
{
    begin({u"--report-ways"_s, u"cdsi"_s});
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(hears(u"DeliveryChanged "_s));
    EXPECT_EQ(deliveryInReport(), u"delivered|20"_s);
    EXPECT_TRUE(isEmptied("SR"));
}

TEST_F(EngineMail, aDeviceWithoutAWayForReportsSendsAllTheSame)
{
    begin({u"--report-ways"_s, u"none"_s});
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(hears(u"SMSSent "_s));
    EXPECT_EQ(count(u"SMSSentFailed"_s), 0);
}

TEST_F(EngineMail, aNetworkThatRefusesTheRequestGetsThePartWithoutIt)
{
    for (const char *const code : {"29", "50", "69"}) {
        begin({u"--refuse-report-request"_s, QLatin1String(code)});
        addSMS(u"600111222"_s, u"one"_s, noonThen());
        addSMS(u"600111333"_s, u"two"_s, noonThen());
        ASSERT_TRUE(until([&] { return count(u"SMSSent "_s) == 2; })) << code;
        EXPECT_EQ(count(u"SMSSentFailed"_s), 0) << code;
        EXPECT_EQ(m_device->messages().size(), 2) << code;
        EXPECT_EQ(page("GetOutcomes").filter(u"|pending|"_s).size(), 0) << code;
        EXPECT_EQ(page("GetOutcomes").filter(u"|||"_s).size(), 0) << code; // there is a reference
        kill();
        ASSERT_TRUE(until([] { return !isOnBus(); }));
        QDir(folder()).removeRecursively();
    }
}

TEST_F(EngineMail, noReportIsAskedForWhereTheSettingSaysSo)
{
    set(u"[Reports]\nDelivery=false\n"_s);
    begin();
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(hears(u"SMSSent "_s));
    deliver(R"({"from":"+34600","text":"behind a report, if there was one"})");
    ASSERT_TRUE(hears(u"Received "_s));
    EXPECT_EQ(count(u"DeliveryChanged"_s), 0);
    EXPECT_EQ(deliveryInReport(), u"|"_s);
}

TEST_F(EngineMail, whatArrivesIsToldListedAndDeletedFromTheDevice)
{
    begin();
    ASSERT_TRUE(hears(u"DeviceInfo "_s));
    deliver(R"({"from":"+34600555666","text":"¿A qué hora abren? 😀","coding":"ucs2"})");
    ASSERT_TRUE(hears(u"Received "_s));
    EXPECT_TRUE(m_listener->heard.filter(u"Received "_s)
                    .constFirst()
                    .contains(u" +34600555666 ¿A qué hora abren? 😀 20"_s));
    const QString row = page("GetReceived").value(0);
    EXPECT_TRUE(row.endsWith(u"|+34600555666|¿A qué hora abren? 😀|false"_s)) << row.toStdString();
    EXPECT_TRUE(isEmptied("SM"));
    const Ended inbox = run({u"--inbox"_s});
    EXPECT_TRUE(inbox.out.contains(u"\t+34600555666\t¿A qué hora abren? 😀\tno\n"_s))
        << inbox.out.toStdString();
    const Ended csv = run({u"--inbox"_s, u"--format"_s, u"csv"_s, u"--since"_s, u"2020-01-01"_s});
    EXPECT_TRUE(csv.out.startsWith(u"at,sent at,phone,message,read\r\n"_s));
}

TEST_F(EngineMail, whatIsReadIsNoLongerUnread)
{
    begin();
    ASSERT_TRUE(hears(u"DeviceInfo "_s));
    deliver(R"({"from":"+34600","text":"one"})");
    deliver(R"({"from":"+34600","text":"two"})");
    ASSERT_TRUE(until([&] { return count(u"Received "_s) == 2; }));
    EXPECT_EQ(status().value(u"unread"_s).toInt(), 2);
    const qlonglong id = page("GetReceived").value(0).section(u'|', 0, 0).toLongLong();
    EXPECT_EQ(ask("MarkRead", {QVariant::fromValue(QList<qlonglong>{id, 999})}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(status().value(u"unread"_s).toInt(), 1);
    EXPECT_TRUE(page("GetReceived").value(0).endsWith(u"|two|true"_s));
}

TEST_F(EngineMail, whatWaitsInTheDevicesMemoriesIsReadAtTheStart)
{
    plugIn();
    deliver(R"({"from":"+34600","text":"from before"})");
    startHeard();
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(u"Received "_s));
    EXPECT_TRUE(page("GetReceived").value(0).contains(u"|from before|"_s));
    EXPECT_TRUE(isEmptied("SM"));
}

TEST_F(EngineMail, partsInAnyOrderAndDoubledMakeOneMessage)
{
    begin();
    ASSERT_TRUE(hears(u"DeviceInfo "_s));
    const QString text = QString(153, u'a') + QString(153, u'b') + u"end"_s;
    deliver("{\"from\":\"+34600\",\"text\":\"" + text.toUtf8() + "\",\"order\":[3,1,1,2]}");
    ASSERT_TRUE(hears(u"Received "_s));
    deliver(R"({"from":"+34600","text":"behind it"})");
    ASSERT_TRUE(until([&] { return count(u"Received "_s) == 2; }));
    EXPECT_TRUE(page("GetReceived").value(1).endsWith(u'|' + text + u"|false"_s));
    EXPECT_EQ(page("GetReceived").size(), 2);
    EXPECT_TRUE(isEmptied("SM"));
}

TEST_F(EngineMail, pagesAreFilteredByText)
{
    begin();
    ASSERT_TRUE(hears(u"DeviceInfo "_s));
    for (const char *const text : {"one", "two", "three"})
        deliver(QByteArray("{\"from\":\"+34600\",\"text\":\"") + text + "\"}");
    ASSERT_TRUE(until([&] { return count(u"Received "_s) == 3; }));
    EXPECT_EQ(page("GetReceived", {}, 1, 1).size(), 1);
    EXPECT_TRUE(page("GetReceived", {}, 1, 1).value(0).contains(u"|two|"_s));
    EXPECT_EQ(page("GetReceived", u"TH"_s).size(), 1);
    EXPECT_EQ(rows(ask("GetReceived", {u"2999"_s, QString(), QString(), 0U, 0U})).size(), 0);
    EXPECT_EQ(page("GetReceived", QString(200, u't')).size(), 0);
    for (const char *const method : {"GetReceived", "GetOutcomes"}) {
        const QDBusMessage refused =
            ask(method, {QString(), QString(), QString(201, u't'), 0U, 0U});
        EXPECT_EQ(refused.errorName(), QDBusError::errorString(QDBusError::InvalidArgs)) << method;
    }
}

TEST_F(EngineMail, whoAnswersWithTheWordGetsNoMoreLists)
{
    set(u"[OptOut]\nCountryPrefix=34\n"_s);
    begin();
    ASSERT_TRUE(hears(u"DeviceInfo "_s));
    deliver(R"({"from":"+34600111222","text":"Baja."})");
    ASSERT_TRUE(hears(u"Received "_s));
    EXPECT_EQ(optOuts().size(), 1);

    addList({{u"600 111 222"_s, u"offer"_s}, {u"600333444"_s, u"offer"_s}});
    ASSERT_TRUE(hears(u"SMSSentFailed 600 111 222 offer -51"_s));
    ASSERT_TRUE(hears(u"WarningError -51 1 of the list's"_s));
    ASSERT_TRUE(hears(u"SMSSent 600333444 "_s));
    EXPECT_EQ(count(u"WarningError -51"_s), 1);
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
    addSMS(u"600111222"_s, u"your order is ready"_s, noonThen());
    ASSERT_TRUE(hears(u"SMSSent 600111222 "_s));

    deliver(R"({"from":"+34600111222","text":"alta"})");
    ASSERT_TRUE(until([&] { return count(u"Received "_s) == 2; }));
    EXPECT_EQ(optOuts().size(), 0);
    addList({{u"600111222"_s, u"offer"_s}});
    ASSERT_TRUE(until([&] { return count(u"SMSSent 600111222 "_s) == 2; }));
}

TEST_F(EngineMail, optOutsAreKeptByTheCommandLineWithAndWithoutAnEngine)
{
    const auto list = [] { return run({u"--opt-out"_s, u"list"_s}).out; };
    EXPECT_EQ(run({u"--opt-out"_s, u"add"_s, u"600 1"_s}).exitCode, 0);
    EXPECT_TRUE(list().endsWith(u"\t600 1\n"_s));
    begin();
    EXPECT_TRUE(list().endsWith(u"\t600 1\n"_s));
    EXPECT_EQ(run({u"--opt-out"_s, u"add"_s, u"6001"_s}).exitCode, 0);
    EXPECT_EQ(optOuts().size(), 1);
    EXPECT_EQ(run({u"--opt-out"_s, u"remove"_s, u"60-01"_s}).exitCode, 0);
    EXPECT_EQ(list(), QString());
    EXPECT_EQ(ask("AddOptOut", {u" "_s}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(ask("AddOptOut", {u"7"_s}).arguments(), QVariantList{true});
    EXPECT_EQ(ask("AddOptOut", {u"7"_s}).arguments(), QVariantList{false});
    EXPECT_EQ(ask("RemoveOptOut", {u"7"_s}).arguments(), QVariantList{true});
    EXPECT_EQ(ask("RemoveOptOut", {u"7"_s}).arguments(), QVariantList{false});
}

TEST_F(EngineMail, commandsOfAnAdministratorFollowWhatTheNetworkSays)
{
    const QTemporaryDir scripts;
    const QString script = scripts.filePath(u"note it"_s);
    QFile file(script);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\nprintf '%s %s %s %s\\n' \"$NORVANE_EVENT\" \"$NORVANE_PHONE\" "
               "\"$NORVANE_TEXT\" \"$NORVANE_STATE\" >>\"$0.notes\"\n");
    file.close();
    ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    set(u"[Hooks]\nOnReceived=%1\nOnDelivery=%1\n"_s.arg(script));
    begin();
    addSMS(u"600111222"_s, u"Hola"_s, noonThen());
    ASSERT_TRUE(hears(u"DeliveryChanged "_s));
    deliver(R"({"from":"+34600","text":"$(reboot); `ls`"})");
    ASSERT_TRUE(until([&] { return bytesOf(script + u".notes"_s).count(u'\n') == 2; }));
    EXPECT_EQ(bytesOf(script + u".notes"_s),
              u"delivery   delivered\nreceived +34600 $(reboot); `ls` \n"_s);
}

TEST_F(EngineMail, nothingIsLostOrDoubledWhenTheEngineIsKilledAtAnyTime)
{
    begin();
    for (int i = 0; i < 10; ++i) {
        deliver("{\"from\":\"+34600\",\"text\":\"message " + QByteArray::number(i) + "\"}");
        if (i % 3 == 2)
            restart();
    }
    ASSERT_TRUE(until([] { return page("GetReceived").size() == 10; }));
    EXPECT_TRUE(isEmptied("SM"));
    QSet<QString> texts;
    for (const QString &row : page("GetReceived"))
        texts.insert(row.section(u'|', 4, 4));
    EXPECT_EQ(texts.size(), 10);
}

TEST_F(EngineMail, theSecondInterfaceStandsOnTheSameObject)
{
    startHeard();
    QDBusMessage question =
        QDBusMessage::createMethodCall(u"com.tovek.SMService"_s, u"/com/tovek/SMService"_s,
                                       u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s);
    const QString tree =
        QDBusConnection::sessionBus().call(question).arguments().value(0).toString();
    EXPECT_TRUE(tree.contains(u"interface name=\"com.tovek.SMService.SMSManager1\""_s));
    EXPECT_TRUE(tree.contains(u"interface name=\"com.tovek.SMService.Messages1\""_s));
    // None of its words stands in the first one.
    const QString first =
        tree.section(u"com.tovek.SMService.SMSManager1"_s, 1).section(u"</interface>"_s, 0, 0);
    EXPECT_FALSE(first.contains(u"GetOutcomes"_s));
    EXPECT_FALSE(first.contains(u"DeliveryChanged"_s));
}

} // namespace

} // namespace norvane
