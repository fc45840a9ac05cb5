#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class OutcomesTest : public StoreFixture
{
protected:
    /// An outcome of this moment.
    void finished(const char *at, bool reported = true, qint32 code = 1)
    {
        done(m_store->queue().finish(add(noon(), QLatin1String(at)), code, std::nullopt,
                                     QLatin1String(at), reported));
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

TEST_F(OutcomesTest, anOutcomeIsKnownByItsId)
{
    const qint64 first = add(noon());
    const qint64 second = add(noon());
    const qint64 outcome = given(m_store->queue().finish(first, -36, std::nullopt, noon(), false));
    const qint64 other = given(m_store->queue().finish(second, -36, std::nullopt, noon(), false));
    done(m_store->outcomes().markReported({outcome}));
    const QList<Outcome> left = given(m_store->outcomes().unreportedFailures());
    ASSERT_EQ(left.size(), 1);
    EXPECT_EQ(left.constFirst().id, other);
}

TEST_F(OutcomesTest, failuresThatNobodyHeardAreKeptInOrderUntilTheyAreReported)
{
    const qint64 second = add(noon(), u"2"_s, u"b"_s);
    const qint64 first = add(noon(), u"1"_s, u"a"_s);
    const qint64 heard = add(noon());
    done(m_store->queue().finish(first, -39, std::nullopt, noon(), false));
    done(m_store->queue().finish(second, -17, std::nullopt, noon(), false));
    done(m_store->queue().finish(heard, -17, std::nullopt, noon(), true));
    EXPECT_TRUE(
        OtherConnection(file())
            .value(u"SELECT network_reference FROM outcome WHERE message_id = %1"_s.arg(first))
            .isNull());
    reopen();

    QList<Outcome> failures = given(m_store->outcomes().unreportedFailures());
    ASSERT_EQ(failures.size(), 2);
    EXPECT_EQ(failures.at(0).phone, u"1"_s);
    EXPECT_EQ(failures.at(0).text, u"a"_s);
    EXPECT_EQ(failures.at(0).code, -39);
    EXPECT_EQ(failures.at(1).phone, u"2"_s);
    EXPECT_EQ(failures.at(1).code, -17);

    done(m_store->outcomes().markReported({}));
    EXPECT_EQ(given(m_store->outcomes().unreportedFailures()).size(), 2);
    done(m_store->outcomes().markReported({failures.at(0).id}));
    reopen();
    failures = given(m_store->outcomes().unreportedFailures());
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(failures.constFirst().phone, u"2"_s);
}

TEST_F(OutcomesTest, oldOutcomesAreForgottenOldestFirstAndAFewAtATime)
{
    finished("2024-03-03T00:00:00");
    finished("2024-03-01T00:00:00");
    finished("2024-03-02T00:00:00", true, -36);
    finished("2024-03-04T00:00:00");
    const QString before = u"2024-03-04T00:00:00"_s;
    EXPECT_EQ(given(m_store->outcomes().prune(before, 2)), 2);
    EXPECT_EQ(outcomes(), QStringList({u"2024-03-03T00:00:00"_s, before}));
    EXPECT_EQ(given(m_store->outcomes().prune(before, 2)), 1);
    EXPECT_EQ(given(m_store->outcomes().prune(before, 2)), 0);
    EXPECT_EQ(outcomes(), QStringList({before}));
}

TEST_F(OutcomesTest, aFailureThatNobodyHasHeardIsKeptHoweverOld)
{
    finished("2020-01-01T00:00:00", false, -36);
    EXPECT_EQ(given(m_store->outcomes().prune(noon(), 10)), 0);
    done(m_store->outcomes().markReported(
        {given(m_store->outcomes().unreportedFailures()).constFirst().id}));
    EXPECT_EQ(given(m_store->outcomes().prune(noon(), 10)), 1);
}

TEST_F(OutcomesTest, theLastFailureIsTheNewestAmongTheOutcomes)
{
    EXPECT_FALSE(given(m_store->outcomes().lastFailure()));
    const char *const at[] = {"2026-01-01T00:00:01", "2026-01-01T00:00:02", "2026-01-01T00:00:03"};
    const qint32 codes[] = {-38, -39, 1};
    for (int number = 0; number < 3; ++number)
        done(m_store->queue().finish(add(QString()), codes[number], std::nullopt,
                                     QLatin1String(at[number]), true));
    const std::optional<LastFailure> failure = given(m_store->outcomes().lastFailure());
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, -39);
    EXPECT_EQ(failure->at, u"2026-01-01T00:00:02"_s);
}

} // namespace

} // namespace norvane
