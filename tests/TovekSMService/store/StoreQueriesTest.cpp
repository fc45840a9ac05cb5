#include "TovekSMService/store/StoreFixture.h"

#include "TovekSMService/store/StoreQueries.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int many = 100'000;

/// A queue with so many messages that anything that reads all of it is noticed.
class StoreMany : public StoreFixture
{
protected:
    StoreMany()
    {
        QList<SMSList::Entry> list;
        for (int i = 0; i < many; ++i)
            list.append({u"waiting"_s, u"Su pedido %1 está listo."_s.arg(i)});
        done(m_store->queue().add(list, u"2100-01-01T00:00:00"_s));
    }
};

/// That none of it reads the whole queue shows the plan of each query, below.
TEST_F(StoreMany, amongWaitingMessagesTheOneThatIsDueTakesItsWay)
{
    constexpr int rounds = 100;
    for (int round = 0; round < rounds; ++round) {
        done(m_store->queue().add({{u"due"_s, u"text"_s}}, noon()));
        const std::optional<StoredMessage> first = given(m_store->queue().first());
        ASSERT_TRUE(first);
        ASSERT_EQ(first->phone, u"due"_s);
        done(m_store->queue().begin({{first->id, std::nullopt, "hash"}}));
        EXPECT_EQ(given(m_store->queue().interrupted()).size(), 1);
        done(m_store->queue().cancel({first->id}));
        done(m_store->queue().releaseBetweenParts());
        done(m_store->queue().finish(first->id, 1, 1, noon(), true));
    }
    EXPECT_EQ(m_store->queue().size(), many);
}

TEST(StoreQueriesTest, noQueryOfTheDispatcherReadsTheWholeQueue)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"queue.sqlite"_s);
    Store store(file);
    done(store.open());
    OtherConnection other(file);
    const struct
    {
        const char *query;
        const char *index;
    } rows[] = {
        {StoreQueries::first, "message_by_due"},
        {StoreQueries::firstDue, "message_by_due"},
        {StoreQueries::interrupted, "message_in_progress"},
        {StoreQueries::releaseBetweenParts, "message_in_progress"},
        {StoreQueries::beginPart, "INTEGER PRIMARY KEY"},
        {StoreQueries::endPart, "INTEGER PRIMARY KEY"},
        {StoreQueries::cancelPart, "INTEGER PRIMARY KEY"},
        {StoreQueries::postpone, "INTEGER PRIMARY KEY"},
        {StoreQueries::keepOutcome, "INTEGER PRIMARY KEY"},
        {StoreQueries::removeMessage, "INTEGER PRIMARY KEY"},
        {StoreQueries::unreportedFailures, "outcome_unreported"},
        {StoreQueries::pruneOutcomes, "outcome_by_time"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.query);
        // Values have no part in the plan.
        const QString query = QString::fromLatin1(row.query).replace(u'?', u'0');
        QString plan;
        for (const QVariantList &step : other.rows(u"EXPLAIN QUERY PLAN "_s + query))
            plan += step.constLast().toString() + u'\n';
        EXPECT_TRUE(plan.contains(QLatin1String(row.index))) << plan.toStdString();
        // "SCAN x USING INDEX" walks an index in its order, and ends at the query's limit.
        for (const QString &step : plan.split(u'\n'))
            EXPECT_FALSE(step.startsWith("SCAN"_L1) && !step.contains("INDEX"_L1))
                << step.toStdString();
    }
}

} // namespace

} // namespace norvane
