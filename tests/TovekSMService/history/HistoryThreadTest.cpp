#include "TovekSMService/history/HistoryThread.h"

#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/StoreFixture.h"
#include "support/TurnedTime.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryThreadTest : public StoreFixture
{
protected:
    HistoryThreadTest() { begin(TimeSource::system()); }

    void begin(TimeSource &time)
    {
        m_thread.reset();
        m_thread =
            std::make_unique<HistoryThread>(HistoryStorage{file()}, time, HistoryThread::Pace());
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
    /// Asks for what ends when it is cancelled, or when its time is over.
    void askUntilCancelled()
    {
        m_thread->ask(
            [this](StoreDatabase &, const QueryLimit &limit) -> StoreResult<QVariantList> {
                m_begun.release();
                for (;;) {
                    if (const StoreResult<> goesOn = limit.check(); !goesOn)
                        return failed(goesOn.error());
                    QThread::yieldCurrentThread();
                }
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

TEST_F(HistoryThreadTest, atRestItIndexesWhatLeftAndWhatCame)
{
    const qint64 outcome = add(noon());
    done(m_store->queue().finish(outcome, 1, 7, noon(), true));
    const qint64 received =
        given(m_store->received().addMessage({0, noon(), {}, u"600"_s, u"text"_s, false}, {}));
    m_thread = std::make_unique<HistoryThread>(HistoryStorage{file(), {}}, TimeSource::system(),
                                               HistoryThread::Pace{100, 1, 1, 1});
    const auto mark = [this](HistoryTable table) {
        return given(IndexMark(m_store->database(), table).value());
    };
    EXPECT_TRUE(waitUntil([&] {
        return mark(HistoryTable::Outcomes) == 1 && mark(HistoryTable::Received) == received;
    }));
}

TEST_F(HistoryThreadTest, aDamagedIndexIsMadeAnewAndIsNoDamageOfTheQueue)
{
    const qint64 outcome = add(noon());
    done(m_store->queue().finish(outcome, 1, 7, noon(), true));
    m_thread = std::make_unique<HistoryThread>(HistoryStorage{file(), {}}, TimeSource::system(),
                                               HistoryThread::Pace{100, 1, 1, 1});
    const auto isIndexed = [this] {
        return waitUntil([this] {
            return given(IndexMark(m_store->database(), HistoryTable::Outcomes).value()) == 1;
        });
    };
    given(m_store->received().addMessage({0, noon(), {}, u"600"_s, u"text"_s, false}, {}));
    ASSERT_TRUE(isIndexed());
    ASSERT_TRUE(waitUntil([this] {
        return given(IndexMark(m_store->database(), HistoryTable::Received).value()) > 0;
    }));
    done(m_store->database().write("UPDATE outcome_search_data SET block = x'00' WHERE id > 10"));
    m_thread->ask(
        [](StoreDatabase &database, const QueryLimit &) -> StoreResult<QVariantList> {
            const StoreResult<qint64> mark = IndexMark(database, HistoryTable::Outcomes).value();
            if (!mark)
                return failed(mark.error());
            if (*mark == 0)
                return IndexMark(database, HistoryTable::Received).value().map([](qint64 other) {
                    return QVariantList{other == 0 ? u"without"_s : u"with one"_s};
                });
            return database
                .each("SELECT rowid FROM outcome_search WHERE outcome_search MATCH '\"tex\"'", {},
                      [](const StoreRow &) { return true; })
                .map([] { return QVariantList{u"with"_s}; });
        },
        [this](const StoreResult<QVariantList> &result) { note(result); });
    ASSERT_TRUE(areAnswered(1));
    EXPECT_EQ(m_answers, QStringList{u"without"_s});
    EXPECT_TRUE(isIndexed());
    EXPECT_EQ(given(m_store->database().rows(
                  "SELECT rowid FROM outcome_search WHERE outcome_search MATCH '\"tex\"'", {},
                  [](const StoreRow &row) { return row.value(0).toInt(); })),
              QList<int>{1});
}

TEST_F(HistoryThreadTest, itEndsWhileAQueryRunsAndOthersWait)
{
    TurnedTime time; // stands still: a query has no end of its own
    begin(time);
    askUntilCancelled();
    ask();
    m_begun.acquire();
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
