#include "TovekSMService/host/DeviceProcess.h"

#include "TovekSMService/store/OtherConnection.h"

#include <QDBusError>
#include <QDBusPendingCall>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The engine's program, and a window that looks at what became of messages.
class EngineHistory : public DeviceProcess
{
protected:
    static QDBusMessage question(const char *operation, const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            u"com.tovek.SMService"_s, u"/com/tovek/SMService"_s, u"com.tovek.SMService.Messages1"_s,
            QLatin1String(operation));
        message.setArguments(arguments);
        return message;
    }
    static QDBusMessage ask(const char *operation, const QVariantList &arguments = {})
    {
        return QDBusConnection::sessionBus().call(question(operation, arguments), QDBus::Block,
                                                  hangMs);
    }
    static QVariantList history(const QString &text = {}, uint states = 63,
                                const QString &after = {}, uint limit = 0)
    {
        return {QString(), QString(), text, states, after, QString(), limit};
    }
    /// The rows of one list of an answer, each with its fields parted by a bar.
    static QStringList rows(const QDBusMessage &answer, int list = 0)
    {
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
        QStringList rows;
        const auto array = answer.arguments().value(list).value<QDBusArgument>();
        array.beginArray();
        while (!array.atEnd()) {
            QStringList fields;
            array.beginStructure();
            while (!array.atEnd())
                fields << array.asVariant().toString();
            array.endStructure();
            rows << fields.join(u'|');
        }
        array.endArray();
        return rows;
    }
    static QString errorOf(const QDBusMessage &answer) { return answer.errorName(); }
    static QString then() { return u"2020-05-01T12:00:00"_s; }
    static QString later() { return u"2100-05-01T12:00:00"_s; }
};

TEST_F(EngineHistory, aMessageIsFollowedFromTheQueueToTheNetwork)
{
    plugIn({});
    startHeard();
    EXPECT_TRUE(QDBusConnection::sessionBus().connect(
        u"com.tovek.SMService"_s, u"/com/tovek/SMService"_s, u"com.tovek.SMService.Messages1"_s,
        u"HistoryChanged"_s, m_listener.get(), SLOT(hear(QDBusMessage))));
    use(m_device->link());
    addSMS(u"+34600112233"_s, u"Mañana"_s, then());
    ASSERT_TRUE(hears(u"HistoryChanged"_s));
    const QStringList waiting = rows(ask("GetHistory", history(u"MANANA"_s)));
    ASSERT_EQ(waiting.size(), 1);
    const QStringList fields = waiting.constFirst().split(u'|');
    ASSERT_EQ(fields.size(), 8);
    EXPECT_EQ(fields.at(1).size(), 19) << "when it was queued";
    EXPECT_EQ(fields.mid(2),
              (QStringList{then(), u"+34600112233"_s, u"Mañana"_s, u"1"_s, u"0"_s, QString()}));
    call("StartEngine");
    ASSERT_TRUE(until([] { return !rows(ask("GetHistory", history(u"6001122"_s, 6))).isEmpty(); }));
    EXPECT_TRUE(rows(ask("GetHistory", history({}, 1))).isEmpty());
    const qlonglong id = fields.constFirst().toLongLong();
    EXPECT_EQ(rows(ask("GetHistoryOf", {QVariant::fromValue(QList<qlonglong>{id, 99})})).size(), 1);
    const QStringList steps = rows(ask("GetSteps", {id}));
    ASSERT_GE(steps.size(), 2);
    EXPECT_TRUE(steps.constFirst().contains(u"|1|0|0|"_s)) << steps.constFirst().toStdString();
    const QDBusMessage summary = ask("GetSummary", {QString(), QString()});
    EXPECT_EQ(rows(summary).size(), 1);
    EXPECT_EQ(rows(summary, 1).size(), 9);
    EXPECT_EQ(rows(summary, 2).size(), 0);
}

TEST_F(EngineHistory, pagesFollowOneAnother)
{
    start();
    for (int number = 0; number < 5; ++number)
        addSMS(u"600"_s, QString::number(number), later());
    QStringList texts;
    QString after;
    do {
        const QDBusMessage page = ask("GetHistory", history({}, 63, after, 2));
        for (const QString &row : rows(page))
            texts.append(row.section(u'|', 4, 4));
        after = page.arguments().value(1).toString();
    } while (!after.isEmpty() && texts.size() < 10);
    EXPECT_EQ(texts, (QStringList{u"4"_s, u"3"_s, u"2"_s, u"1"_s, u"0"_s}));
}

TEST_F(EngineHistory, whatMakesNoSenseIsRefused)
{
    start();
    const QString invalid = QDBusError::errorString(QDBusError::InvalidArgs);
    const QVariantList inbox = {QString(), QString(), QString(), false, QString(), QString(), 0U};
    const struct
    {
        const char *name;
        const char *operation;
        QVariantList arguments;
        QString error;
    } calls[] = {
        {"no such state", "GetHistory", history({}, 64), invalid},
        {"all bits", "GetHistory", history({}, 0xFFFFFFFFU), invalid},
        {"no cursor", "GetHistory", history({}, 63, u"x"_s), invalid},
        {"a cursor of the inbox", "GetHistory", history({}, 63, u"i.1"_s), invalid},
        {"too long a text", "GetHistory", history(QString(201, u'a')), invalid},
        {"no states", "GetHistory", history({}, 0), {}},
        {"a long text", "GetHistory", history(QString(200, u'a')), {}},
        {"quotes", "GetHistory", history(u"\"' OR 1=1; NEAR( * % _"_s), {}},
        {"too many ids", "GetHistoryOf", {QVariant::fromValue(QList<qlonglong>(1001, 1))}, invalid},
        {"no ids", "GetHistoryOf", {QVariant::fromValue(QList<qlonglong>())}, {}},
        {"inbox", "GetInbox", inbox, {}},
        {"unknown message", "GetSteps", {qlonglong{-5}}, {}},
        {"ids to mark", "MarkRead", {QVariant::fromValue(QList<qlonglong>(1000, 1))}, {}},
        {"too many to mark", "MarkRead", {QVariant::fromValue(QList<qlonglong>(1001, 1))}, invalid},
        {"a phone", "AddOptOut", {QString(100, u'6')}, {}},
        {"too long a phone", "AddOptOut", {QString(101, u'6')}, invalid},
        {"no phone", "AddOptOut", {u" "_s}, invalid},
        {"a moment", "GetSummary", {then(), later()}, {}},
    };
    for (const auto &row : calls) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(errorOf(ask(row.operation, row.arguments)), row.error);
    }
    const QString tooLong = then() + u'0';
    for (const int bound : {0, 1}) {
        QVariantList range = {QString(), QString()};
        range[bound] = tooLong;
        EXPECT_EQ(errorOf(ask("GetSummary", range)), invalid);
        EXPECT_EQ(errorOf(ask("GetHistory", range + history().mid(2))), invalid);
        EXPECT_EQ(errorOf(ask("GetInbox", range + inbox.mid(2))), invalid);
        const QVariantList whole = range + QVariantList{QString(), 0U, 0U};
        EXPECT_EQ(errorOf(ask("GetOutcomes", whole)), invalid);
        EXPECT_EQ(errorOf(ask("GetReceived", whole)), invalid);
    }
    EXPECT_EQ(ask("GetHistory", history({}, 64)).errorMessage(),
              u"invalid state, cursor or number of ids"_s);
    QVariantList until = history();
    until[5] = u"h.1"_s;
    EXPECT_EQ(errorOf(ask("GetHistory", until)), invalid);
    QVariantList inboxUntil = inbox;
    inboxUntil[4] = u"h.1.1"_s;
    EXPECT_EQ(errorOf(ask("GetInbox", inboxUntil)), invalid);
}

TEST_F(EngineHistory, whoHasOptedOutIsKnownHoweverTheNumberIsWritten)
{
    start();
    const auto isOptedOut = [](const QString &phone) {
        return ask("IsOptedOut", {phone}).arguments().value(0).toBool();
    };
    EXPECT_FALSE(isOptedOut(u"600112233"_s));
    ask("AddOptOut", {u"600 11 22 33"_s});
    EXPECT_TRUE(isOptedOut(u"600112233"_s));
    EXPECT_TRUE(isOptedOut(u"600-11-22-33"_s));
    EXPECT_FALSE(isOptedOut(u"600112234"_s));
    EXPECT_FALSE(isOptedOut(QString()));
    ask("RemoveOptOut", {u"600112233"_s});
    EXPECT_FALSE(isOptedOut(u"600112233"_s));
}

TEST_F(EngineHistory, theEngineEndsWhileItIsAsked)
{
    start();
    for (int call = 0; call < 16; ++call)
        QDBusConnection::sessionBus().asyncCall(question("GetSummary", {QString(), QString()}));
    stop();
    EXPECT_EQ(m_engine.exitStatus(), QProcess::NormalExit);
    start();
    EXPECT_TRUE(rows(ask("GetHistory", history())).isEmpty());
}

} // namespace

} // namespace norvane
