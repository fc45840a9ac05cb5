#include "TovekSMService/store/StoreFixture.h"

#include "TovekSMService/store/StoreReader.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoreOpening : public StoreFixture
{};

TEST_F(StoreOpening, aStoreThatIsNotOpenFailsInEveryOperationAndOpensLater)
{
    add(u"2026-01-01T00:00:00"_s);
    Store store(file(), Store::Opening::Later);
    EXPECT_EQ(store.access(), Store::Access::None);
    EXPECT_EQ(store.size(), 0);
    EXPECT_THROW(store.rows(), StoreFailure);
    EXPECT_THROW(store.firstDue(), StoreFailure);
    EXPECT_THROW(store.isToRun(), StoreFailure);
    EXPECT_THROW(store.setToRun(true), StoreFailure);
    EXPECT_THROW(store.add({{u"1"_s, QString()}}, QString()), StoreFailure);
    store.open();
    EXPECT_EQ(store.access(), Store::Access::Whole);
    EXPECT_EQ(store.size(), 1);
    store.close();
    EXPECT_EQ(store.access(), Store::Access::None);
    EXPECT_THROW(store.rows(), StoreFailure);
}

TEST_F(StoreOpening, whatIsNoDatabaseIsNotOpenedForReadingEither)
{
    m_store.reset();
    QFile damaged(file());
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
    damaged.write(QByteArray(5000, 'x'));
    damaged.close();
    Store store(file(), Store::Opening::Later);
    try {
        store.open();
        ADD_FAILURE() << "it was opened";
    } catch (const StoreFailure &failure) {
        EXPECT_EQ(failure.kind(), StoreFailure::Kind::Corrupt);
    }
    EXPECT_EQ(store.access(), Store::Access::None);
}

TEST_F(StoreOpening, damageBehindASoundHeaderIsSeenAtOnce)
{
    for (int number = 0; number < 200; ++number)
        add(u"2026-01-01T00:00:00"_s, u"600"_s, QString(100, u't'));
    m_store.reset();
    QFile damaged(file());
    ASSERT_TRUE(damaged.open(QIODevice::ReadWrite));
    // One page in the middle; a file of this size has many.
    ASSERT_GT(damaged.size(), 8 * 4096);
    ASSERT_TRUE(damaged.seek(6 * 4096));
    damaged.write(QByteArray(4096, 'x'));
    damaged.close();
    try {
        const Store store(file());
        ADD_FAILURE() << "it was opened";
    } catch (const StoreFailure &failure) {
        EXPECT_EQ(failure.kind(), StoreFailure::Kind::Corrupt);
    }
}

TEST_F(StoreOpening, theLastFailureIsTheNewestAmongTheOutcomes)
{
    EXPECT_FALSE(m_store->lastFailure());
    const char *const at[] = {"2026-01-01T00:00:01", "2026-01-01T00:00:02", "2026-01-01T00:00:03"};
    const qint32 codes[] = {-38, -39, 1};
    for (int number = 0; number < 3; ++number)
        m_store->finish(add(QString()), codes[number], std::nullopt, QLatin1String(at[number]),
                        true);
    const std::optional<LastFailure> failure = m_store->lastFailure();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, -39);
    EXPECT_EQ(failure->at, u"2026-01-01T00:00:02"_s);
}

TEST_F(StoreOpening, aReaderMakesNoFileAndChangesNone)
{
    EXPECT_THROW(StoreReader(file() + u"-missing"_s), StoreFailure);
    EXPECT_FALSE(QFile::exists(file() + u"-missing"_s));
    m_store.reset();
    OtherConnection(file()).run(u"PRAGMA user_version = 1"_s);
    try {
        const StoreReader reader(file());
        ADD_FAILURE() << "an earlier version was read";
    } catch (const StoreFailure &failure) {
        EXPECT_TRUE(failure.text().contains("still has the schema version 1"_L1));
    }
    EXPECT_EQ(OtherConnection(file()).value(u"PRAGMA user_version"_s).toInt(), 1);
}

} // namespace

} // namespace norvane
