#include "TovekSMService/store/StoreReader.h"

#include "TovekSMService/store/StoreFixture.h"

#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoreReaderTest : public StoreFixture
{};

TEST_F(StoreReaderTest, aReaderMakesNoFileAndChangesNone)
{
    EXPECT_FALSE(StoreReader(file() + u"-missing"_s).open());
    EXPECT_FALSE(QFile::exists(file() + u"-missing"_s));
    m_store.reset();
    OtherConnection(file()).run(u"PRAGMA user_version = 1"_s);
    const StoreResult<> opened = StoreReader(file()).open();
    ASSERT_FALSE(opened) << "an earlier version was read";
    EXPECT_TRUE(opened.error().text().contains("still has the schema version 1"_L1));
    EXPECT_EQ(OtherConnection(file()).value(u"PRAGMA user_version"_s).toInt(), 1);
}

TEST_F(StoreReaderTest, outcomesAreReadInTheirOrderFromAMomentOnBesideTheStore)
{
    for (const char *const at :
         {"2026-01-01T00:00:00", "2026-01-02T00:00:00", "2026-01-03T00:00:00"})
        done(m_store->queue().finish(add(noon()), 1, 7, QLatin1String(at), true));
    StoreReader reader(file());
    EXPECT_FALSE(reader.outcomes(QString(), [](const OutcomeRow &) {})) << "it is not open yet";
    done(reader.open());
    QStringList moments;
    done(reader.outcomes(u"2026-01-02"_s, [&](const OutcomeRow &row) { moments << row.at; }));
    EXPECT_EQ(moments, QStringList({u"2026-01-02T00:00:00"_s, u"2026-01-03T00:00:00"_s}));
}

TEST_F(StoreReaderTest, anOutcomeComesWithWhatTheNetworkSays)
{
    for (int message = 0; message < 2; ++message)
        done(m_store->queue().finish(add(noon()), 1, 7, noon(), true));
    const QString later = u"2024-05-01T12:00:09"_s;
    done(m_store->outcomes().setDelivery(1, DeliveryState::Delivered, later));
    done(m_store->outcomes().setDelivery(2, DeliveryState::Refused, later));
    StoreReader reader(file());
    done(reader.open());
    QList<OutcomeRow> rows;
    done(reader.outcomes({}, [&](const OutcomeRow &row) { rows << row; }));
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.at(0), (OutcomeRow{1, noon(), noon(), u"600"_s, u"text"_s, 1, u"7"_s,
                                      DeliveryState::Delivered, later}));
    EXPECT_EQ(rows.at(1).delivery, DeliveryState::Refused);
    EXPECT_EQ(rows.at(1).deliveredAt, QString());
}

TEST_F(StoreReaderTest, aCopyIsAStoreOfItsOwn)
{
    add(noon(), u"600"_s);
    StoreReader reader(file());
    done(reader.open());
    const QString copy = m_folder.filePath(u"copy.sqlite"_s);
    done(reader.copyTo(copy));
    EXPECT_FALSE(reader.copyTo(copy)) << "it is there already";
    Store store(copy);
    done(store.open());
    EXPECT_EQ(store.queue().size(), 1);
}

} // namespace

} // namespace norvane
