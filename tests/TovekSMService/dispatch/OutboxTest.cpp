#include "TovekSMService/dispatch/Outbox.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/OpenStore.h"
#include "contract/ErrorCodes.h"
#include "support/TurnedTime.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int retryMs = 20;

class OutboxTest : public testing::Test
{
protected:
    OutboxTest()
    {
        const auto note = [this](const QString &event) { m_events.append(event); };
        QObject::connect(&m_outbox, &Outbox::committed, [=] { note(u"committed"_s); });
        QObject::connect(&m_outbox, &Outbox::queueChanged, [=] { note(u"queue"_s); });
        QObject::connect(&m_outbox, &Outbox::sent,
                         [=](const QString &phone, const QString &text, int others) {
                             note(u"sent %1 %2 %3"_s.arg(phone, text).arg(others));
                         });
        QObject::connect(&m_outbox, &Outbox::sendingFailed,
                         [=](const QString &phone, const QString &text, int code) {
                             note(u"failed %1 %2 %3"_s.arg(phone, text).arg(code));
                         });
        QObject::connect(&m_outbox, &Outbox::warning,
                         [=](int code) { note(u"warning %1"_s.arg(code)); });
        QObject::connect(&m_outbox, &Outbox::warned,
                         [=](int code) { note(u"warned %1"_s.arg(code)); });
        QObject::connect(&m_outbox, &Outbox::reportRaised,
                         [=](qint64 report) { note(u"report %1"_s.arg(report)); });
        QObject::connect(&m_outbox, &Outbox::warningHandled,
                         [=](int code) { note(u"handled %1"_s.arg(code)); });
        m_outbox.setHasListeners(true);
    }

    static DispatcherTimings timings()
    {
        DispatcherTimings timings;
        timings.storeRetryMs = retryMs;
        return timings;
    }
    static StoreResult<> failToWrite()
    {
        return failed(StoreFailure(StoreFailure::Kind::Full, u"full"_s));
    }

    /// An entry that notes when it is written and reported.
    Outbox::Entry entry(const QString &name)
    {
        return {[this, name] {
                    m_events.append(u"write "_s + name);
                    if (m_failures == 0)
                        return StoreResult<>();
                    --m_failures;
                    return failToWrite();
                },
                [this, name] { m_events.append(u"tell "_s + name); }};
    }
    Outbox::FollowUp following(bool begins)
    {
        return {[this, begins] {
                    m_events.append(u"begin"_s);
                    return StoreResult<bool>(begins);
                },
                [this] { m_events.append(u"start"_s); }};
    }
    static StoredMessage message()
    {
        StoredMessage message;
        message.phone = u"600"_s;
        message.text = u"text"_s;
        return message;
    }
    QStringList takeEvents() { return std::exchange(m_events, {}); }

    QTemporaryDir m_folder;
    TurnedTime m_time;
    std::unique_ptr<Store> m_store = openStore(m_folder);
    QStringList m_events;
    int m_failures = 0; ///< of the writes to come
    Outbox m_outbox{m_store->database(), m_store->outcomes(), timings(), m_time};
};

TEST_F(OutboxTest, anEntryIsReportedWhenItIsOnDisk)
{
    m_outbox.commit(entry(u"a"_s), {});
    EXPECT_EQ(takeEvents(), (QStringList{u"write a"_s, u"tell a"_s, u"committed"_s}));
    EXPECT_TRUE(m_outbox.isEmpty());
    EXPECT_EQ(m_time.alarms(), 0);
}

TEST_F(OutboxTest, anEntryMayHaveNothingToWriteAndNothingToReport)
{
    m_outbox.commit({}, {});
    EXPECT_EQ(takeEvents(), QStringList{u"committed"_s});
    EXPECT_TRUE(m_outbox.isEmpty());
}

TEST_F(OutboxTest, anEntryThatCannotBeWrittenIsRetriedUntilItIs)
{
    m_failures = 2;
    m_outbox.commit(entry(u"a"_s), {});
    EXPECT_EQ(takeEvents(), QStringList{u"write a"_s});
    EXPECT_FALSE(m_outbox.isEmpty());
    EXPECT_EQ(m_outbox.storeMonitor().failure(), u"full"_s);
    m_time.pass(retryMs);
    EXPECT_EQ(takeEvents(), QStringList{u"write a"_s});
    m_time.pass(retryMs - 1);
    EXPECT_TRUE(takeEvents().isEmpty());
    m_time.pass(1);
    EXPECT_EQ(takeEvents(), (QStringList{u"write a"_s, u"tell a"_s, u"committed"_s}));
    m_time.pass(60'000);
    EXPECT_TRUE(takeEvents().isEmpty());
}

TEST_F(OutboxTest, anEntryGoesBehindTheOneThatWaits)
{
    m_failures = 1;
    m_outbox.commit(entry(u"a"_s), {});
    takeEvents();
    m_outbox.commit(entry(u"b"_s), {});
    EXPECT_EQ(takeEvents(),
              (QStringList{u"write a"_s, u"write b"_s, u"tell a"_s, u"tell b"_s, u"committed"_s}));
    m_time.pass(60'000);
    EXPECT_TRUE(takeEvents().isEmpty()) << "the retry is off";
}

TEST_F(OutboxTest, whatFollowsBeginsInTheSameCommitAndStartsBeforeTheReport)
{
    m_outbox.commit(entry(u"a"_s), following(true));
    EXPECT_EQ(takeEvents(), (QStringList{u"write a"_s, u"begin"_s, u"start"_s, u"tell a"_s}));
    m_outbox.commit(entry(u"a"_s), following(false));
    EXPECT_EQ(takeEvents(), (QStringList{u"write a"_s, u"begin"_s, u"tell a"_s, u"committed"_s}));
}

TEST_F(OutboxTest, nothingFollowsInTheCommitOfARetry)
{
    m_failures = 1;
    m_outbox.commit(entry(u"a"_s), following(true));
    EXPECT_EQ(takeEvents(), QStringList{u"write a"_s});
    m_time.pass(retryMs);
    EXPECT_EQ(takeEvents(), (QStringList{u"write a"_s, u"tell a"_s, u"committed"_s}));
}

TEST_F(OutboxTest, whatFollowsAndCannotBeginTakesTheEntryBack)
{
    bool started = false;
    m_outbox.commit(entry(u"a"_s),
                    {[]() -> StoreResult<bool> { return failed(failToWrite().error()); },
                     [&] { started = true; }});
    EXPECT_FALSE(started);
    EXPECT_EQ(takeEvents(), QStringList{u"write a"_s});
    m_time.pass(retryMs);
    EXPECT_EQ(takeEvents(), (QStringList{u"write a"_s, u"tell a"_s, u"committed"_s}));
    EXPECT_FALSE(started);
}

TEST_F(OutboxTest, aWarningIsRaisedAndKeptUntilItIsHandled)
{
    m_outbox.warn(-2, u"gone"_s);
    EXPECT_EQ(takeEvents(), (QStringList{u"warned -2"_s, u"warning -2"_s, u"report -1"_s}));
    EXPECT_EQ(m_outbox.unacknowledgedWarnings().entries().size(), 1);
    m_outbox.noteHandled(-1);
    EXPECT_EQ(takeEvents(), QStringList{u"handled -2"_s});
    EXPECT_TRUE(m_outbox.unacknowledgedWarnings().entries().isEmpty());
    m_outbox.noteHandled(-1);
    EXPECT_TRUE(takeEvents().isEmpty());
}

TEST_F(OutboxTest, whereNobodyListensAWarningIsKeptAndNotRaised)
{
    m_outbox.setHasListeners(false);
    m_outbox.warn(-2, u"gone"_s);
    EXPECT_EQ(takeEvents(), QStringList{u"warned -2"_s});
    EXPECT_EQ(m_outbox.unacknowledgedWarnings().entries().size(), 1);
}

TEST_F(OutboxTest, aSentMessageIsReportedWhereSomeoneListens)
{
    m_outbox.reportSent(message(), 3);
    EXPECT_EQ(takeEvents(), (QStringList{u"sent 600 text 3"_s, u"queue"_s}));
    m_outbox.setHasListeners(false);
    m_outbox.reportSent(message(), 3);
    EXPECT_EQ(takeEvents(), QStringList{u"queue"_s});
}

TEST_F(OutboxTest, aFailureIsReportedUnderTheNumberOfItsOutcome)
{
    m_outbox.reportFailed(message(), 17, ErrorCode::networkTp);
    EXPECT_EQ(takeEvents(), (QStringList{u"failed 600 text -37"_s, u"report 17"_s, u"queue"_s}));
    EXPECT_TRUE(m_outbox.unacknowledgedWarnings().entries().isEmpty());
}

TEST_F(OutboxTest, aMessageThatMayHaveBeenDeliveredIsWarnedOf)
{
    m_outbox.reportFailed(message(), 17, ErrorCode::noRespond);
    EXPECT_EQ(takeEvents(), (QStringList{u"failed 600 text -39"_s, u"warned -39"_s,
                                         u"warning -39"_s, u"report 17"_s, u"queue"_s}));
    m_outbox.setHasListeners(false);
    m_outbox.reportFailed(message(), 17, ErrorCode::noRespond);
    EXPECT_EQ(takeEvents(), (QStringList{u"warned -39"_s, u"queue"_s}));
    EXPECT_TRUE(Outbox::doubtOf(u"600"_s).contains(u"600"_s));
}

TEST_F(OutboxTest, anOutcomeThatIsHandledIsKnownBeforeThatIsNoted)
{
    m_outbox.noteHandled(17);
    EXPECT_TRUE(m_outbox.acknowledgedOutcomes().contains(17));
    EXPECT_FALSE(m_outbox.acknowledgedOutcomes().contains(18));
}

TEST_F(OutboxTest, aStoreThatCannotBeUsedIsWarnedOfUnderItsCode)
{
    m_outbox.storeMonitor().warn(u"full"_s);
    EXPECT_EQ(takeEvents(), (QStringList{u"warned -57"_s, u"warning -57"_s, u"report -1"_s}));
}

} // namespace

} // namespace norvane
