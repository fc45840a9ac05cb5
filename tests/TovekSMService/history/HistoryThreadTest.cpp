#include "TovekSMService/history/HistoryThread.h"

#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/StoreFixture.h"
#include "support/WaitUntil.h"

#include <QSemaphore>
#include <QThread>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryThreadTest : public StoreFixture
{
protected:
    HistoryThreadTest() { begin(); }

    void begin()
    {
        m_thread = std::make_unique<HistoryThread>(HistoryStorage{file(), {}}, TimeSource::system(),
                                                   HistoryThread::Pace());
    }

    /// Asks for how many messages there are, and notes the answer.
    HistoryThread::Cancelled ask()
    {
        return m_thread->ask(
            [](StoreDatabase &database, const QueryLimit &limit) {
                return HistoryPages(database, limit)
                    .page({}, {}, {}, 10)
                    .map([](const HistoryPage &page) { return QVariantList{page.rows.size()}; });
            },
            [this](const StoreResult<QVariantList> &result) { note(result); });
    }
    /// Asks for what takes until release().
    HistoryThread::Cancelled askSlowly()
    {
        return m_thread->ask(
            [this](StoreDatabase &, const QueryLimit &limit) {
                m_begun.release();
                m_released.acquire();
                return limit.check().map([] { return QVariantList{u"slow"_s}; });
            },
            [this](const StoreResult<QVariantList> &result) { note(result); });
    }
    void note(const StoreResult<QVariantList> &result)
    {
        m_answers.append(result ? result->constFirst().toString() : u"failed"_s);
    }
    bool areAnswered(qsizetype count)
    {
        return waitUntil([&] { return m_answers.size() >= count; });
    }

    QSemaphore m_begun;
    QSemaphore m_released;
    QStringList m_answers;
    std::unique_ptr<HistoryThread> m_thread;
};

TEST_F(HistoryThreadTest, answersComeInTheOrderOfTheQuestions)
{
    add(noon());
    askSlowly();
    ask();
    m_begun.acquire();
    EXPECT_TRUE(m_answers.isEmpty());
    m_released.release();
    ASSERT_TRUE(areAnswered(2));
    EXPECT_EQ(m_answers, (QStringList{u"slow"_s, u"1"_s}));
}

TEST_F(HistoryThreadTest, aQueryThatNobodyWantsFailsWhetherItRunsOrWaits)
{
    const auto running = askSlowly();
    const auto waiting = ask();
    ask();
    m_begun.acquire();
    running->store(true);
    waiting->store(true);
    m_released.release();
    ASSERT_TRUE(areAnswered(3));
    EXPECT_EQ(m_answers, (QStringList{u"failed"_s, u"failed"_s, u"0"_s}));
}

TEST_F(HistoryThreadTest, itEndsWhileAQueryRunsAndOthersWait)
{
    askSlowly();
    ask();
    m_begun.acquire();
    m_released.release();
    m_thread.reset();
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_answers.isEmpty());
}

TEST_F(HistoryThreadTest, aFileThatIsReplacedIsOpenedAnew)
{
    add(noon());
    ask();
    ASSERT_TRUE(areAnswered(1));
    m_thread->suspend();
    ask();
    m_store.reset();
    for (const QString &end : {u""_s, u"-wal"_s, u"-shm"_s})
        QFile::remove(file() + end);
    m_store = openTestStore(file());
    m_thread->resume();
    ASSERT_TRUE(areAnswered(2));
    EXPECT_EQ(m_answers, (QStringList{u"1"_s, u"0"_s}));
}

TEST_F(HistoryThreadTest, withoutAFileAQueryFailsAtOnceAndMakesNone)
{
    m_thread->suspend();
    m_store.reset();
    for (const QString &end : {u""_s, u"-wal"_s, u"-shm"_s})
        QFile::remove(file() + end);
    m_thread->resume();
    ask();
    ASSERT_TRUE(areAnswered(1));
    EXPECT_EQ(m_answers, QStringList{u"failed"_s});
    EXPECT_FALSE(QFile::exists(file()));
}

TEST_F(HistoryThreadTest, aDamagedFileIsAFailure)
{
    m_thread->suspend();
    m_store.reset();
    QFile damaged(file());
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly | QIODevice::Truncate));
    damaged.write(QByteArray(8192, 'x'));
    damaged.close();
    m_thread->resume();
    ask();
    ASSERT_TRUE(areAnswered(1));
    EXPECT_EQ(m_answers, QStringList{u"failed"_s});
}

TEST_F(HistoryThreadTest, aFileThatIsLockedForWritingIsRead)
{
    add(noon());
    OtherConnection other(file());
    other.lock();
    ask();
    EXPECT_TRUE(areAnswered(1));
    other.unlock();
    EXPECT_EQ(m_answers, QStringList{u"1"_s});
}

} // namespace

} // namespace norvane
