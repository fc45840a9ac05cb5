#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoreLimits : public StoreFixture
{
protected:
    QPair<qint64, qint64> counts(const char *at) const
    {
        const PartCounts counts = m_store->partCounts(QLatin1String(at));
        return {counts.inMinute, counts.inDay};
    }

    void count(const char *at) { m_store->countPart(QLatin1String(at)); }

    /// An outcome of this moment.
    void finished(const char *at, bool reported = true, qint32 code = 1)
    {
        m_store->finish(add(noon(), QLatin1String(at)), code, std::nullopt, QLatin1String(at),
                        reported);
    }

    QStringList outcomes() const
    {
        QStringList moments;
        for (const QVariantList &row :
             OtherConnection(file()).rows(u"SELECT at FROM outcome ORDER BY at"_s))
            moments << row.constFirst().toString();
        return moments;
    }
};

using Counts = QPair<qint64, qint64>;

TEST_F(StoreLimits, partsAreCountedByMinuteAndDayAcrossReopening)
{
    EXPECT_EQ(counts("2024-05-01T12:00:00"), Counts(0, 0));
    count("2024-05-01T12:00:00");
    count("2024-05-01T12:00:59");
    EXPECT_EQ(counts("2024-05-01T12:00:30"), Counts(2, 2));
    EXPECT_EQ(counts("2024-05-01T12:01:00"), Counts(0, 2));
    EXPECT_EQ(counts("2024-05-02T12:00:00"), Counts(0, 0));
    reopen();
    count("2024-05-01T12:01:00");
    EXPECT_EQ(counts("2024-05-01T12:01:00"), Counts(1, 3));
    count("2024-05-02T00:00:00");
    EXPECT_EQ(counts("2024-05-02T00:00:00"), Counts(1, 1));
}

TEST_F(StoreLimits, aPartThatDidNotLeaveIsTakenBackWhereItWasCounted)
{
    count("2024-05-01T23:59:59");
    count("2024-05-01T23:59:59");
    m_store->uncountPart(u"2024-05-01T23:59:59"_s);
    EXPECT_EQ(counts("2024-05-01T23:59:00"), Counts(1, 1));
    m_store->uncountPart(u"2024-05-01T23:59:59"_s);
    m_store->uncountPart(u"2024-05-01T23:59:59"_s);
    EXPECT_EQ(counts("2024-05-01T23:59:00"), Counts(0, 0));
}

TEST_F(StoreLimits, aClockSetBackFindsItsDayCountedAndItsMinutesFree)
{
    count("2024-05-01T12:00:00");
    count("2024-05-02T12:00:00");
    EXPECT_EQ(counts("2024-05-01T12:00:00"), Counts(0, 1));
}

TEST_F(StoreLimits, countsOfLongAgoAreForgotten)
{
    for (int day = 1; day <= 28; ++day)
        m_store->countPart(u"2024-05-%1T12:00:00"_s.arg(day, 2, 10, QChar(u'0')));
    EXPECT_EQ(OtherConnection(file()).value(u"SELECT COUNT(*) FROM part_count"_s), 9);
    EXPECT_EQ(counts("2024-05-20T12:00:00").second, 0);
    EXPECT_EQ(counts("2024-05-21T12:00:00").second, 1);
}

TEST_F(StoreLimits, oldOutcomesAreForgottenOldestFirstAndAFewAtATime)
{
    finished("2024-03-03T00:00:00");
    finished("2024-03-01T00:00:00");
    finished("2024-03-02T00:00:00", true, -36);
    finished("2024-03-04T00:00:00");
    const QString before = u"2024-03-04T00:00:00"_s;
    EXPECT_EQ(m_store->pruneOutcomes(before, 2), 2);
    EXPECT_EQ(outcomes(), QStringList({u"2024-03-03T00:00:00"_s, before}));
    EXPECT_EQ(m_store->pruneOutcomes(before, 2), 1);
    EXPECT_EQ(m_store->pruneOutcomes(before, 2), 0);
    EXPECT_EQ(outcomes(), QStringList({before}));
}

TEST_F(StoreLimits, aFailureThatNobodyHasHeardIsKeptHoweverOld)
{
    finished("2020-01-01T00:00:00", false, -36);
    EXPECT_EQ(m_store->pruneOutcomes(noon(), 10), 0);
    m_store->markReported({m_store->unreportedFailures().constFirst().id});
    EXPECT_EQ(m_store->pruneOutcomes(noon(), 10), 1);
}

TEST_F(StoreLimits, thePlaceInTheQueueMovesAndTheOriginalDateStays)
{
    const qint64 id = add(noon(), u"600"_s);
    const QString later = u"2024-05-01T13:00:00"_s;
    m_store->postpone(id, 1, later);
    reopen();
    EXPECT_EQ(m_store->first()->deliveryDate, later);
    EXPECT_EQ(m_store->first()->originalDate, noon());
    m_store->finish(id, 1, 5, later, true);
    EXPECT_EQ(OtherConnection(file()).value(u"SELECT delivery_date FROM outcome"_s), noon());
}

class StoreTogether : public StoreFixture
{};

TEST_F(StoreTogether, severalOperationsAreOneCommit)
{
    const qint64 first = add(noon(), u"1"_s);
    const qint64 second = add(noon(), u"2"_s);
    OtherConnection other(file());
    const QString seen = u"SELECT (SELECT COUNT(*) FROM outcome) || ' ' || "
                         "(SELECT COUNT(*) FROM message WHERE state = 1)"_s;
    m_store->together([&] {
        m_store->finish(first, 1, 1, noon(), true);
        EXPECT_EQ(m_store->first()->id, second);
        m_store->beginPart(second, m_store->nextReference(), "hash");
        m_store->countPart(noon());
        EXPECT_EQ(other.value(seen), u"0 0"_s);
    });
    EXPECT_EQ(other.value(seen), u"1 1"_s);
    EXPECT_EQ(m_store->size(), 1);
    reopen();
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_EQ(m_store->interrupted().size(), 1);
}

TEST_F(StoreTogether, aFailureUndoesAllOfThemAndTheStoreIsUsedOn)
{
    const qint64 id = add(noon());
    OtherConnection other(file());
    const QList<QVariantList> before = other.contents();
    EXPECT_THROW(m_store->together([&] {
        m_store->finish(id, 1, 1, noon(), true);
        m_store->add({{u"a"_s, {}}, {u"b"_s, {}}}, noon());
        EXPECT_EQ(m_store->size(), 2);
        throw StoreFailure(StoreFailure::Kind::Other, u"no"_s);
    }),
                 StoreFailure);
    EXPECT_EQ(other.contents(), before);
    EXPECT_EQ(m_store->size(), 1);

    m_store->together([&] { m_store->finish(id, 1, 1, noon(), true); });
    m_store->add({{u"c"_s, {}}}, noon());
    reopen();
    EXPECT_EQ(phones(), QStringList({u"c"_s}));
}

TEST_F(StoreTogether, nothingIsKeptWhileAnotherHasTheLock)
{
    const qint64 id = add(noon());
    OtherConnection other(file());
    other.lock();
    bool tried = false;
    EXPECT_THROW(m_store->together([&] { tried = true; }), StoreFailure);
    EXPECT_FALSE(tried);
    other.unlock();
    m_store->together([&] { m_store->finish(id, 1, 1, noon(), true); });
    EXPECT_EQ(m_store->size(), 0);
}

} // namespace

} // namespace norvane
