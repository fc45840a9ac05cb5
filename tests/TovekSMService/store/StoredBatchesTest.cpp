#include "TovekSMService/store/StoredBatches.h"

#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoredBatchesTest : public StoreFixture
{
protected:
    static QList<QueueRow> messages(int count, const QString &text = u"text"_s)
    {
        QList<QueueRow> messages;
        for (int i = 0; i < count; ++i)
            messages.append({u"2024-05-01T12:%1:00"_s.arg(i % 60, 2, 10, QChar(u'0')),
                             QString::number(i), text, 0});
        return messages;
    }
    void add(const QString &batch, const QList<QueueRow> &messages)
    {
        done(StoredBatches(m_store->queue()).add(batch, messages));
    }
    qsizetype stored(const QString &batch) const
    {
        return given(StoredBatches(m_store->queue()).stored(batch));
    }
    QStringList phonesOnDisk() const
    {
        QStringList phones;
        for (const QVariantList &row :
             OtherConnection(file()).rows(u"SELECT phone FROM message ORDER BY id"_s))
            phones.append(row.constFirst().toString());
        return phones;
    }

    const QString one = u"one"_s;
};

TEST_F(StoredBatchesTest, itsMessagesAreQueuedInTheirOrderEachWithItsOwnDate)
{
    add(one, messages(3));
    const QList<QueueRow> rows = given(m_store->queue().rows());
    ASSERT_EQ(rows.size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(rows.at(i).phone, QString::number(i));
        EXPECT_EQ(rows.at(i).deliveryDate, u"2024-05-01T12:0%1:00"_s.arg(i));
        EXPECT_NE(rows.at(i).id, 0);
    }
    EXPECT_EQ(stored(one), 3);
    EXPECT_EQ(m_store->queue().size(), 3);
}

TEST_F(StoredBatchesTest, theSameBatchAgainQueuesNothingNew)
{
    add(one, messages(3));
    add(one, messages(3));
    EXPECT_EQ(m_store->queue().size(), 3);
    add(u"other"_s, messages(2));
    EXPECT_EQ(m_store->queue().size(), 5);
}

TEST_F(StoredBatchesTest, whatIsStoredOfABatchIsKnownToTheEngineThatComesUpAnew)
{
    add(one, messages(3));
    reopen();
    EXPECT_EQ(stored(one), 3);
    add(one, messages(3));
    EXPECT_EQ(m_store->queue().size(), 3);
}

TEST_F(StoredBatchesTest, aFullDiskTakesWhatFitsFromTheFirstOn)
{
    add(u"before"_s, messages(1));
    const QList<QueueRow> batch = messages(400, QString(300, u'x'));
    runOnStoreConnection(file(), u"PRAGMA max_page_count = 40"_s);
    EXPECT_FALSE(StoredBatches(m_store->queue()).add(one, batch));
    const qsizetype taken = stored(one);
    EXPECT_GT(taken, 0);
    EXPECT_LT(taken, 400);
    EXPECT_EQ(m_store->queue().size(), taken + 1);
    EXPECT_FALSE(m_store->queue().add({batch.at(taken)})) << "not one more would fit";

    freeDisk(file());
    add(one, batch);
    EXPECT_EQ(stored(one), 400);
    QStringList phones = {u"0"_s};
    for (int i = 0; i < 400; ++i)
        phones.append(QString::number(i));
    EXPECT_EQ(phonesOnDisk(), phones) << "each of them once, in their order";
}

TEST_F(StoredBatchesTest, aLockKeepsAllOfThemOut)
{
    OtherConnection other(file());
    other.lock();
    EXPECT_FALSE(StoredBatches(m_store->queue()).add(one, messages(3)));
    other.unlock();
    EXPECT_EQ(stored(one), 0);
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(StoredBatchesTest, onlyTheLastFewAreRemembered)
{
    for (int i = 0; i <= StoredBatches::maxRemembered; ++i)
        add(QString::number(i), messages(1));
    EXPECT_EQ(stored(u"0"_s), 0);
    EXPECT_EQ(stored(u"1"_s), 1);
}

TEST_F(StoredBatchesTest, anyTextIsAName)
{
    const QStringList names = {QString(), u"a b"_s, u":"_s, u"one:9"_s, QString(100'000, u'x')};
    for (const QString &name : names) {
        add(name, messages(2));
        EXPECT_EQ(stored(name), 2);
    }
    EXPECT_EQ(m_store->queue().size(), 2 * names.size());
    EXPECT_LT(given(m_store->queue().recentBatches()).size(), 1000);
}

} // namespace

} // namespace norvane
