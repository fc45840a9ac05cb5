#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/HistoryThread.h"
#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStoreShared.h"
#include "support/PostgresProxy.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A clock that two threads may look at, and that stands until it is put forward.
class ForwardedTime : public TimeSource
{
public:
    qint64 nanoseconds() const override { return m_now; }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> due) override
    {
        return system().makeAlarm(std::move(due));
    }

    void pass(qint64 milliseconds) { m_now += milliseconds * 1'000'000; }

private:
    std::atomic<qint64> m_now = 0;
};

using Answer = StoreResult<QVariantList>;

/// The thread of the history, whose way to the database can be cut and held.
class SharedHistoryThreadTest : public testing::Test
{
protected:
    SharedHistoryThreadTest() { testServer().freshDatabase(name()); }
    ~SharedHistoryThreadTest() override
    {
        m_proxy.clearTrap();
        m_proxy.release();
    }

    static QString name() { return u"history"_s; }
    /// What a connection that waits for nothing but questions is left alone for.
    static constexpr int longRestMs = 3'600'000;

    void begin(TimeSource &time, int restMs = longRestMs, const QString &database = name())
    {
        HistoryThread::Pace pace;
        pace.restMs = restMs;
        m_thread = std::make_unique<HistoryThread>(
            HistoryStorage{{}, m_proxy.address() + u' ' + PostgresServer::login(database)}, time,
            pace);
    }
    /// Asks for the messages.
    std::shared_ptr<std::optional<Answer>> ask()
    {
        auto answer = std::make_shared<std::optional<Answer>>();
        m_thread->ask(
            [](StoreDatabase &database, const QueryLimit &limit) {
                return HistoryPages(database, limit)
                    .page({}, {}, {}, 10)
                    .map([](const HistoryPage &page) { return QVariantList{page.rows.size()}; });
            },
            [answer](const Answer &given) { *answer = given; });
        return answer;
    }
    Answer answer()
    {
        const auto given = ask();
        EXPECT_TRUE(waitUntil([&] { return given->has_value(); }));
        return given->value_or(QVariantList());
    }
    void expectAway(const Answer &answer)
    {
        ASSERT_FALSE(answer);
        EXPECT_EQ(answer.error().kind(), StoreFailure::Kind::Away);
        EXPECT_FALSE(answer.error().text().isEmpty());
    }
    void takeAway()
    {
        m_proxy.setRefusing(true);
        m_proxy.cut();
    }
    /// Brings it back, and passes the time in which nobody tries again.
    void bringBack()
    {
        m_proxy.setRefusing(false);
        m_time.pass(1000);
    }
    bool isHeld() { return m_proxy.waiting(PostgresProxy::Direction::ToServer) > 0; }

    ForwardedTime m_time;
    PostgresProxy m_proxy{testServer().socketPath()};
    std::unique_ptr<HistoryThread> m_thread;
};

TEST_F(SharedHistoryThreadTest, aConnectionThatIsLostWhileNobodyAsksIsMadeAnewByTheNextQuery)
{
    begin(m_time);
    done(answer());
    m_proxy.cut();
    done(answer());
    EXPECT_EQ(m_proxy.connections(), 2);
}

TEST_F(SharedHistoryThreadTest, aDatabaseThatGoesAwayIsAFailureUntilItIsBack)
{
    begin(m_time);
    done(answer());
    takeAway();
    expectAway(answer());
    expectAway(answer());
    bringBack();
    done(answer());
}

TEST_F(SharedHistoryThreadTest, aDatabaseThatIsNotThereYetIsAFailureUntilItIs)
{
    takeAway();
    begin(m_time);
    expectAway(answer());
    bringBack();
    done(answer());
}

TEST_F(SharedHistoryThreadTest, aQueryWhoseConnectionIsCutIsCarriedOutOnAnotherOne)
{
    begin(m_time);
    done(answer());
    for (const auto moment :
         {PostgresTrap::Moment::BeforeMessage, PostgresTrap::Moment::AfterMessage}) {
        const int connections = m_proxy.connections();
        m_proxy.setTrap({.message = 4, .moment = moment});
        done(answer());
        EXPECT_TRUE(m_proxy.hasTrapActed());
        EXPECT_EQ(m_proxy.connections(), connections + 1);
    }
}

TEST_F(SharedHistoryThreadTest, aQueryInWhichTheDatabaseGoesAwayFails)
{
    begin(m_time);
    done(answer());
    m_proxy.setTrap({.message = 4, .act = PostgresTrap::Act::Hold});
    const auto held = ask();
    ASSERT_TRUE(waitUntil([this] { return m_proxy.hasTrapActed(); }));
    EXPECT_FALSE(*held);
    takeAway();
    m_proxy.clearTrap();
    m_proxy.release();
    ASSERT_TRUE(waitUntil([&] { return held->has_value(); }));
    expectAway(held->value());
    bringBack();
    done(answer());
}

TEST_F(SharedHistoryThreadTest, theCallerIsToldThatTheDatabaseDoesNotAnswer)
{
    begin(m_time);
    done(answer());
    m_proxy.hold();
    const auto held = ask();
    ASSERT_TRUE(waitUntil([this] { return isHeld(); }));
    m_time.pass(QueryLimit::maxMs);
    ASSERT_TRUE(waitUntil([&] { return held->has_value(); }));
    expectAway(held->value());
    EXPECT_EQ(held->value().error().text(), u"the database doesn't answer"_s);
    m_proxy.release();
    done(answer());
}

TEST_F(SharedHistoryThreadTest, whoeverWaitsIsAnsweredByOneAttemptToConnect)
{
    testServer().sql(u"DROP DATABASE IF EXISTS missing"_s);
    begin(m_time, longRestMs, u"missing"_s);
    const auto first = ask();
    const auto second = ask();
    const auto third = ask();
    ASSERT_TRUE(waitUntil([&] { return third->has_value(); }));
    EXPECT_EQ(m_proxy.connections(), 1);
    for (const auto &each : {first, second, third})
        expectAway(each->value());
    m_time.pass(1000);
    expectAway(answer());
    EXPECT_EQ(m_proxy.connections(), 2);
    testServer().freshDatabase(u"missing"_s);
    m_time.pass(1000);
    done(answer());
}

TEST_F(SharedHistoryThreadTest, itEndsWhileAQueryIsHeldAndOthersWait)
{
    begin(TimeSource::system());
    done(answer());
    m_proxy.hold();
    const auto held = ask();
    const auto waiting = ask();
    ASSERT_TRUE(waitUntil([this] { return isHeld(); }));
    m_thread.reset();
    QCoreApplication::processEvents();
    EXPECT_FALSE(*held);
    EXPECT_FALSE(*waiting);
}

TEST_F(SharedHistoryThreadTest, itEndsWhileItConnects)
{
    m_proxy.hold();
    begin(TimeSource::system());
    const auto held = ask();
    ASSERT_TRUE(waitUntil([this] { return isHeld(); }));
    m_thread.reset();
    QCoreApplication::processEvents();
    EXPECT_FALSE(*held);
}

TEST_F(SharedHistoryThreadTest, theIndexGoesOnBehindALostConnection)
{
    begin(m_time, 1);
    done(answer());
    const auto mark = [] {
        PostgresDatabase database(testServer().connection(name()));
        done(database.open());
        return given(IndexMark(database, HistoryTable::Outcomes).value());
    };
    for (int outcomes = 1; outcomes < 3; ++outcomes) {
        testServer().sql(
            u"INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported) "
            "VALUES (1, '', '600', 'text', 1, '2026-01-01', 1)"_s,
            name());
        EXPECT_TRUE(waitUntil([&] {
            m_time.pass(TextIndex::settleMs);
            return mark() == outcomes;
        }));
        takeAway();
        expectAway(answer());
        bringBack();
    }
}

} // namespace

} // namespace norvane
