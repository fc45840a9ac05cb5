#include "TovekSMService/dispatch/DispatcherFixture.h"
#include "TovekSMService/modem/device/FakeMailbox.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

// From 123, in UCS-2: "A"; and the first of two parts, which says "B".
const QByteArray whole = "0004039121F300086221900112038002"
                         "0041";
const QByteArray firstHalf = "0044039121F300086221900112038008"
                             "0500032A0201"
                             "0042";

/// A dispatcher whose device has received something.
class DispatcherMail : public DispatcherFixture
{
protected:
    DispatcherMail()
    {
        m_line->onCommand = [this, rest = m_line->onCommand](const QByteArray &command) {
            const std::optional<QByteArray> answer = m_mailbox.answerTo(command);
            return answer ? answer : rest(command);
        };
        listen();
    }

    void listen()
    {
        QObject::connect(
            m_dispatcher.get(), &Dispatcher::received,
            [this](const ReceivedMessage &message) { m_events << u"received "_s + message.text; });
        QObject::connect(m_dispatcher.get(), &Dispatcher::deliveryChanged,
                         [this](const DeliveryChange &change) {
                             m_events << u"delivery "_s + QLatin1String(nameOf(change.state));
                         });
    }
    void begin()
    {
        makeDispatcher();
        listen();
        startReady();
    }
    void receive(const QByteArray &pdu) { m_mailbox.memories["SM"].insert(1, {0, pdu}); }
    bool isEmptied() const { return m_mailbox.memories.value("SM").isEmpty(); }
    int countOf(const QString &table) const
    {
        return onDisk(u"SELECT COUNT(*) FROM "_s + table).toInt();
    }
    /// Lets the clock go on, and everything that waits for it.
    void pass(qint64 seconds)
    {
        m_clock.now = m_clock.now.addSecs(seconds);
        m_time.pass(60'000);
        takeTurns();
    }
    QString deliveryOnDisk() const
    {
        return QLatin1String(
            nameOf(static_cast<DeliveryState>(onDisk(u"SELECT delivery FROM outcome"_s).toInt())));
    }

    FakeMailbox m_mailbox;
};

TEST_F(DispatcherMail, whatWasReceivedIsStoredToldAndThenDeleted)
{
    receive(whole);
    begin();
    ASSERT_TRUE(until([this] { return isEmptied(); }));
    EXPECT_EQ(count(u"received A"_s), 1);
    EXPECT_EQ(countOf(u"received"_s), 1);
}

TEST_F(DispatcherMail, whatCannotBeStoredStaysOnTheDeviceUntilItCan)
{
    OtherConnection other(file());
    other.refuse(u"INSERT"_s, u"received"_s);
    receive(whole);
    const NotedLog log;
    begin();
    ASSERT_TRUE(until([&] { return log.count(u"can't be kept for now"_s) >= 2; }));
    EXPECT_FALSE(isEmptied());
    EXPECT_EQ(countOf(u"received_part"_s), 0);
    EXPECT_EQ(count(u"received A"_s), 0);

    other.allow(u"received"_s);
    ASSERT_TRUE(until([this] { return isEmptied(); }));
    EXPECT_EQ(count(u"received A"_s), 1);
    EXPECT_EQ(countOf(u"received"_s), 1);
}

TEST_F(DispatcherMail, messagesAreSentAlthoughWhatWasReceivedCannotBeStored)
{
    OtherConnection other(file());
    other.refuse(u"INSERT"_s, u"received"_s);
    receive(whole);
    add(u"600"_s);
    begin();
    EXPECT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
}

TEST_F(DispatcherMail, whatTheDeviceDoesNotDeleteIsToldOnce)
{
    m_mailbox.isDeleting = false;
    receive(whole);
    begin();
    ASSERT_TRUE(until([this] { return has(u"received A"_s); }));
    begin(); // as after a crash
    takeTurns();
    EXPECT_EQ(count(u"received A"_s), 1);
    EXPECT_EQ(countOf(u"received"_s), 1);
}

TEST_F(DispatcherMail, aPartIsShownAsItIsAfterADayAndNotBefore)
{
    receive(firstHalf);
    begin();
    ASSERT_TRUE(until([this] { return isEmptied(); }));
    pass(24 * 3600);
    EXPECT_EQ(countOf(u"received"_s), 0);
    pass(1);
    EXPECT_EQ(count(u"received B[...]"_s), 1);
    pass(24 * 3600);
    EXPECT_EQ(countOf(u"received"_s), 1);
}

TEST_F(DispatcherMail, aReportThatDoesNotComeWithinTheValidityPeriodIsUnknown)
{
    m_settings.validityPeriod = 60;
    begin();
    add(u"600"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(deliveryOnDisk(), u"pending"_s);
    pass(2 * 3600); // an hour for the report's own way
    EXPECT_EQ(deliveryOnDisk(), u"pending"_s);
    pass(1);
    EXPECT_EQ(deliveryOnDisk(), u"unknown"_s);
    EXPECT_EQ(count(u"delivery unknown"_s), 1);
}

TEST_F(DispatcherMail, withoutAValidityPeriodAReportIsAwaitedForAWeek)
{
    begin();
    add(u"600"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    pass(7 * 24 * 3600);
    EXPECT_EQ(deliveryOnDisk(), u"pending"_s);
    pass(1);
    EXPECT_EQ(deliveryOnDisk(), u"unknown"_s);
}

TEST_F(DispatcherMail, aReportThatComesAfterAllStillCounts)
{
    m_settings.validityPeriod = 60;
    begin();
    add(u"123"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 123 text 0"_s); }));
    pass(3 * 3600);
    ASSERT_EQ(deliveryOnDisk(), u"unknown"_s);
    const int number = onDisk(u"SELECT reference FROM sent_part"_s).toInt();
    const QByteArray reference = QByteArray(1, static_cast<char>(number)).toHex().toUpper();
    m_mailbox.memories["SR"].insert(
        1, {0, "0006" + reference + "038121F3622190011203806221900112038000"});
    m_line->say("\r\n+CDSI: \"SR\",1\r\n");
    ASSERT_TRUE(until([this] { return has(u"delivery delivered"_s); }));
    EXPECT_EQ(deliveryOnDisk(), u"delivered"_s);
}

TEST_F(DispatcherMail, aListIsQueuedWithoutThoseWhoOptedOut)
{
    done(m_dispatcher->optOuts().add(u"600 111"_s, noon()).map([](bool) {}));
    done(m_dispatcher->addList(u"token"_s, {{u"600111"_s, u"offer"_s}, {u"601"_s, u"offer"_s}}, noon()));
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(eventsButQueue(), (QStringList{u"failed 600111 offer -51"_s, u"warning -51"_s}));
    EXPECT_EQ(
        onDisk(u"SELECT phone || code || delivery_date || reported FROM outcome"_s).toString(),
        u"600111-51"_s + noon() + u"0"_s);
    EXPECT_EQ(m_reports.size(), 2);
}

TEST_F(DispatcherMail, aListThatTheStoreDoesNotTakeIsNeitherQueuedNorReported)
{
    done(m_dispatcher->optOuts().add(u"600"_s, noon()).map([](bool) {}));
    OtherConnection other(file());
    other.refuse(u"INSERT"_s, u"outcome"_s);
    EXPECT_FALSE(m_dispatcher->addList(u"token"_s, {{u"601"_s, u"a"_s}, {u"600"_s, u"b"_s}}, noon()));
    EXPECT_EQ(m_store->queue().size(), 0);
    EXPECT_EQ(countOf(u"message"_s), 0);
    EXPECT_TRUE(eventsButQueue().isEmpty());
}

TEST_F(DispatcherMail, aListOfWhichNobodyOptedOutIsQueuedWithoutAWord)
{
    done(m_dispatcher->addList(u"token"_s, {{u"600"_s, u"a"_s}, {u"601"_s, u"b"_s}}, noon()));
    EXPECT_EQ(m_store->queue().size(), 2);
    EXPECT_TRUE(eventsButQueue().isEmpty());
    done(m_dispatcher->addList(u"token"_s, {}, noon()));
    EXPECT_EQ(m_store->queue().size(), 2);
}

const QByteArray acknowledge = "AT+CNMA";

/// A device that routes status reports and waits for our word.
class DispatcherRoutedReports : public DispatcherFixture
{
protected:
    DispatcherRoutedReports()
    {
        m_line->answers.insert("AT+CNMI=?", FakeModemLine::info("+CNMI: (2),(1),(0),(1)"));
        for (const QByteArray &command : {"AT+CSMS=1"_ba, "AT+CNMI=2,1,0,1,0"_ba, acknowledge})
            m_line->answers.insert(command, FakeModemLine::answer("OK"));
    }

    void report()
    {
        m_line->say("\r\n+CDS: 25\r\n"
                    "0006000B914306101122F24270501121318042705011213180"
                    "00\r\n");
    }
};

TEST_F(DispatcherRoutedReports, areAcknowledgedWithoutAnotherEvent)
{
    startReady();
    for (int count = 1; count <= 2; ++count) {
        report();
        takeTurns(); // no time passes
        ASSERT_EQ(m_line->commands.count(acknowledge), count);
    }
}

TEST_F(DispatcherRoutedReports, holdUpNothingThatIsDue)
{
    startReady();
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (command.startsWith("AT+CMGS="))
            report();
        return std::nullopt;
    };
    for (int i = 0; i < 3; ++i)
        add(u"60%1"_s.arg(i));
    m_dispatcher->noticeQueueChange();
    takeTurns(); // no time passes
    EXPECT_EQ(m_store->queue().size(), 0);
    EXPECT_EQ(m_line->payloads.size(), 3);
}

} // namespace

} // namespace norvane
