#include "TovekSMService/store/KeptSettlements.h"

#include "TovekSMService/store/SqliteDatabase.h"
#include "TovekSMService/store/StoreResults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class KeptSettlementsTest : public testing::Test
{
protected:
    KeptSettlementsTest() { done(m_database.open()); }

    static Settlement sent()
    {
        Settlement settlement;
        settlement.message = 4'000'000'000;
        settlement.fate = Settlement::Fate::Sent;
        settlement.epoch = 7;
        settlement.phone = u"600"_s;
        settlement.text = u"ñ€😀"_s;
        settlement.networkReference = 0;
        settlement.at = u"2024-05-01T12:00:00"_s;
        settlement.part = SentPart{4'000'000'000, 2, 3, 255, u"+34600"_s, u"sim"_s, settlement.at};
        return settlement;
    }
    static Settlement postponed()
    {
        Settlement settlement;
        settlement.message = 1;
        settlement.fate = Settlement::Fate::Postponed;
        settlement.code = -36;
        settlement.attempts = 3;
        settlement.partsSent = 1;
        settlement.nextAttempt = u"2024-05-01T12:00:30"_s;
        return settlement;
    }

    QTemporaryDir m_folder;
    SqliteDatabase m_database{m_folder.filePath(u"queue.sqlite"_s)};
    KeptSettlements m_kept{m_database};
};

TEST_F(KeptSettlementsTest, areGivenBackWholeAndInTheirOrder)
{
    done(m_kept.keep({sent(), postponed()}));
    done(m_database.open());
    const QList<Settlement> all = given(m_kept.all());
    ASSERT_EQ(all.size(), 2);
    EXPECT_EQ(all.at(0).message, sent().message);
    EXPECT_EQ(all.at(0).fate, Settlement::Fate::Sent);
    EXPECT_EQ(all.at(0).epoch, 7);
    EXPECT_EQ(all.at(0).phone, u"600"_s);
    EXPECT_EQ(all.at(0).text, sent().text);
    EXPECT_EQ(all.at(0).networkReference, 0);
    EXPECT_EQ(all.at(0).at, sent().at);
    ASSERT_TRUE(all.at(0).part);
    EXPECT_EQ(all.at(0).part->message, sent().message);
    EXPECT_EQ(all.at(0).part->number, 2);
    EXPECT_EQ(all.at(0).part->total, 3);
    EXPECT_EQ(all.at(0).part->reference, 255);
    EXPECT_EQ(all.at(0).part->phone, u"+34600"_s);
    EXPECT_EQ(all.at(0).part->sim, u"sim"_s);
    EXPECT_EQ(all.at(0).part->at, sent().at);
    EXPECT_EQ(all.at(1).fate, Settlement::Fate::Postponed);
    EXPECT_EQ(all.at(1).code, -36);
    EXPECT_EQ(all.at(1).attempts, 3);
    EXPECT_EQ(all.at(1).partsSent, 1);
    EXPECT_EQ(all.at(1).nextAttempt, postponed().nextAttempt);
    EXPECT_FALSE(all.at(1).networkReference);
    EXPECT_FALSE(all.at(1).part);
}

TEST_F(KeptSettlementsTest, takeThePlaceOfThoseBefore)
{
    done(m_kept.keep({sent()}));
    done(m_kept.keep({postponed()}));
    ASSERT_EQ(given(m_kept.all()).size(), 1);
    EXPECT_EQ(given(m_kept.all()).constFirst().message, 1);
    done(m_kept.clear());
    EXPECT_TRUE(given(m_kept.all()).isEmpty());
}

} // namespace

} // namespace norvane
