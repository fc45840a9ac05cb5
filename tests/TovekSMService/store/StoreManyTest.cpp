#include "TovekSMService/store/StoreFixture.h"

#include "TovekSMService/store/StoreQueries.h"

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
            list.append(
                {QStringLiteral("waiting"), QStringLiteral("Su pedido %1 está listo.").arg(i)});
        m_store->add(list, QStringLiteral("2100-01-01T00:00:00"));
    }
};

/// That none of it reads the whole queue shows the plan of each query, below.
TEST_F(StoreMany, amongWaitingMessagesTheOneThatIsDueTakesItsWay)
{
    constexpr int rounds = 100;
    for (int round = 0; round < rounds; ++round) {
        m_store->add({{QStringLiteral("due"), QStringLiteral("text")}}, noon());
        const std::optional<StoredMessage> first = m_store->first();
        ASSERT_TRUE(first);
        ASSERT_EQ(first->phone, QStringLiteral("due"));
        m_store->beginPart(first->id, std::nullopt, "hash");
        EXPECT_EQ(m_store->interrupted().size(), 1);
        m_store->cancelPart(first->id);
        m_store->releaseBetweenParts();
        m_store->finish(first->id, 1, 1, noon(), true);
    }
    EXPECT_EQ(m_store->size(), many);
}

TEST(StorePlan, noQueryOfTheDispatcherReadsTheWholeQueue)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("queue.sqlite"));
    const Store store(file);
    OtherConnection other(file);
    const struct
    {
        const char *query;
        const char *index;
    } rows[] = {
        {StoreQueries::First, "message_by_due"},
        {StoreQueries::FirstDue, "message_by_due"},
        {StoreQueries::Interrupted, "message_in_progress"},
        {StoreQueries::ReleaseBetweenParts, "message_in_progress"},
        {StoreQueries::BeginPart, "INTEGER PRIMARY KEY"},
        {StoreQueries::EndPart, "INTEGER PRIMARY KEY"},
        {StoreQueries::CancelPart, "INTEGER PRIMARY KEY"},
        {StoreQueries::Postpone, "INTEGER PRIMARY KEY"},
        {StoreQueries::KeepOutcome, "INTEGER PRIMARY KEY"},
        {StoreQueries::RemoveMessage, "INTEGER PRIMARY KEY"},
        {StoreQueries::UnreportedFailures, "outcome_unreported"},
        {StoreQueries::PruneOutcomes, "outcome_by_time"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.query);
        // Values have no part in the plan.
        const QString query = QString::fromLatin1(row.query).replace(u'?', u'0');
        QString plan;
        for (const QVariantList &step : other.rows(QStringLiteral("EXPLAIN QUERY PLAN ") + query))
            plan += step.constLast().toString() + u'\n';
        EXPECT_TRUE(plan.contains(QLatin1String(row.index))) << plan.toStdString();
        // "SCAN x USING INDEX" walks an index in its order, and ends at the query's limit.
        for (const QString &step : plan.split(u'\n'))
            EXPECT_FALSE(step.startsWith(QLatin1String("SCAN")) &&
                         !step.contains(QLatin1String("INDEX")))
                << step.toStdString();
    }
}

} // namespace
