#include "TovekSMService/dispatch/StoreMonitor.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/OpenStore.h"
#include "TovekSMService/store/OtherConnection.h"
#include "support/TurnedTime.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int monitorRetryMs = 20;
constexpr int lastingMs = 60;

class StoreMonitorTest : public testing::Test
{
protected:
    using Kind = StoreFailure::Kind;

    StoreMonitorTest()
    {
        QObject::connect(&m_monitor, &StoreMonitor::warning,
                         [this](const QString &text) { m_events.append(u"warning "_s + text); });
        QObject::connect(&m_monitor, &StoreMonitor::lost, [this](bool damaged) {
            m_events.append(damaged ? u"damaged"_s : u"lost"_s);
        });
        QObject::connect(&m_monitor, &StoreMonitor::writable,
                         [this] { m_events.append(u"writable"_s); });
    }

    static DispatcherTimings timings()
    {
        DispatcherTimings timings;
        timings.storeRetryMs = monitorRetryMs;
        timings.storeFaultMs = lastingMs;
        return timings;
    }
    void fail(Kind kind = Kind::Busy) { m_monitor.noteFailure(StoreFailure(kind, u"reason"_s)); }
    /// Forbids the store to write, and allows it again.
    void forbid() { runOnStoreConnection(m_store->file().file(), u"PRAGMA query_only = ON"_s); }
    void allow() { runOnStoreConnection(m_store->file().file(), u"PRAGMA query_only = OFF"_s); }
    qsizetype count(const QString &event) const { return m_events.filter(event).size(); }

    QTemporaryDir m_folder;
    TurnedTime m_time;
    std::unique_ptr<Store> m_store = openStore(m_folder);
    /// Of an engine whose queue lies elsewhere.
    std::unique_ptr<Store> m_ownFile = openTestStore(m_folder.filePath(u"own.sqlite"_s));
    QStringList m_events;
    StoreMonitor m_monitor{{&m_store->database(), &m_ownFile->database()}, timings(), m_time};
};

TEST_F(StoreMonitorTest, looksAtNothingBeforeTheFirstFailure)
{
    EXPECT_TRUE(m_monitor.failure().isEmpty());
    EXPECT_TRUE(m_monitor.fault().isEmpty());
    EXPECT_EQ(m_time.alarms(), 0);
}

TEST_F(StoreMonitorTest, aFailureStandsUntilTheStoreCanBeWritten)
{
    fail();
    EXPECT_EQ(m_monitor.failure(), u"reason"_s);
    m_time.pass(monitorRetryMs - 1);
    EXPECT_TRUE(m_events.isEmpty());
    m_time.pass(1);
    EXPECT_EQ(m_events, QStringList{u"writable"_s});
    EXPECT_TRUE(m_monitor.failure().isEmpty());
    m_time.pass(60'000);
    EXPECT_EQ(m_events.size(), 1) << "nothing is probed any more";
}

TEST_F(StoreMonitorTest, furtherFailuresDoNotPutOffTheProbe)
{
    fail();
    m_time.pass(monitorRetryMs / 2);
    fail();
    m_time.pass(monitorRetryMs / 2);
    EXPECT_EQ(count(u"writable"_s), 1);
}

TEST_F(StoreMonitorTest, aFailureThatLastsIsWarnedOfOnce)
{
    OtherConnection other(m_store->file().file());
    other.lock();
    fail();
    m_time.pass(lastingMs - 1);
    EXPECT_TRUE(m_events.isEmpty());
    m_time.pass(1);
    ASSERT_EQ(m_events.size(), 1);
    EXPECT_TRUE(m_events.first().startsWith(u"warning the store can't be used: "_s));
    EXPECT_EQ(u"warning "_s + m_monitor.fault(), m_events.first());
    m_time.pass(2 * lastingMs);
    EXPECT_EQ(m_events.size(), 1) << "and another program's lock is no lost store";
    other.unlock();
    m_time.pass(monitorRetryMs);
    EXPECT_EQ(m_events.last(), u"writable"_s);
    EXPECT_TRUE(m_monitor.fault().isEmpty());
}

TEST_F(StoreMonitorTest, theNextFailureLastsFromItsOwnBeginning)
{
    fail();
    m_time.pass(lastingMs);
    m_events.clear();
    OtherConnection other(m_store->file().file());
    other.lock();
    fail();
    m_time.pass(lastingMs - 1);
    EXPECT_TRUE(m_events.isEmpty());
    m_time.pass(1);
    EXPECT_EQ(count(u"warning"_s), 1);
    other.unlock();
}

TEST_F(StoreMonitorTest, aFailureOfTheOwnFileLastsAlthoughTheQueueCanBeWritten)
{
    const QString file = m_ownFile->file().file();
    runOnStoreConnection(file, u"PRAGMA query_only = ON"_s);
    fail(Kind::Full);
    m_time.pass(lastingMs);
    EXPECT_EQ(count(u"warning"_s), 1);
    EXPECT_EQ(count(u"lost"_s), 1);
    EXPECT_EQ(count(u"writable"_s), 0);
    m_time.pass(2 * lastingMs);
    EXPECT_EQ(count(u"warning"_s), 1);
    runOnStoreConnection(file, u"PRAGMA query_only = OFF"_s);
    m_time.pass(monitorRetryMs);
    EXPECT_EQ(m_events.last(), u"writable"_s);
    EXPECT_TRUE(m_monitor.fault().isEmpty());
}

TEST_F(StoreMonitorTest, failuresOfBothAreWarnedOfOnce)
{
    OtherConnection other(m_store->file().file());
    other.lock();
    runOnStoreConnection(m_ownFile->file().file(), u"PRAGMA query_only = ON"_s);
    fail();
    m_time.pass(lastingMs);
    EXPECT_EQ(count(u"warning"_s), 1);
    other.unlock();
    m_time.pass(2 * lastingMs);
    EXPECT_EQ(count(u"warning"_s), 1);
    EXPECT_EQ(count(u"writable"_s), 0);
}

TEST_F(StoreMonitorTest, aStoreThatStaysUnwritableIsLostAgainAndAgain)
{
    forbid();
    fail(Kind::ReadOnly);
    m_time.pass(lastingMs);
    EXPECT_EQ(count(u"lost"_s), 1);
    m_time.pass(lastingMs - 1);
    EXPECT_EQ(count(u"lost"_s), 1);
    m_time.pass(1);
    EXPECT_EQ(count(u"lost"_s), 2);
    EXPECT_EQ(count(u"warning"_s), 1);
    allow();
    m_time.pass(monitorRetryMs);
    EXPECT_EQ(m_events.last(), u"writable"_s);
}

TEST_F(StoreMonitorTest, aDamagedStoreIsLostAtOnce)
{
    forbid();
    fail(Kind::Corrupt);
    fail(Kind::Corrupt);
    EXPECT_EQ(m_events, QStringList{u"damaged"_s});
    m_time.pass(lastingMs);
    m_events.clear();
    fail(Kind::Corrupt);
    EXPECT_TRUE(m_events.isEmpty()) << "the probe has reported that shortly before";
    allow();
    m_time.pass(monitorRetryMs);
    fail(Kind::Corrupt);
    EXPECT_EQ(m_events.last(), u"damaged"_s) << "of a store that could be written meanwhile";
}

TEST_F(StoreMonitorTest, aStoreThatIsNotWhollyOpenIsLeftToWhoOpensIt)
{
    m_store->close();
    fail(Kind::Other);
    m_time.pass(10 * lastingMs);
    EXPECT_TRUE(m_events.isEmpty());
    EXPECT_FALSE(m_monitor.failure().isEmpty());
}

TEST_F(StoreMonitorTest, aWarningFromOutsideStandsUntilItIsEnded)
{
    m_monitor.warn(u"damaged"_s);
    EXPECT_EQ(m_monitor.fault(), u"the store can't be used: damaged"_s);
    EXPECT_EQ(m_events.size(), 1);
    m_monitor.endFault();
    EXPECT_TRUE(m_monitor.fault().isEmpty());
}

} // namespace

} // namespace norvane
