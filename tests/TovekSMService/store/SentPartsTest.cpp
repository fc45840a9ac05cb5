#include "TovekSMService/store/SentParts.h"

#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class SentPartsTest : public StoreFixture
{
protected:
    SentParts &sent() { return m_store->sentParts(); }

    /// Notes a part of a message as sent.
    void send(qint64 message, int reference, const QString &at = noon())
    {
        done(sent().add({message, 1, 1, reference, u"600"_s, u"sim"_s, at}));
    }

    void finish(qint64 message, const QString &at = noon())
    {
        done(m_store->queue().finish(message, 1, 7, at, true));
    }

    int rows(const char *table) const
    {
        return OtherConnection(file())
            .value(u"SELECT COUNT(*) FROM "_s + QLatin1String(table))
            .toInt();
    }

    static QString later() { return u"2030-01-01T00:00:00"_s; }
};

TEST_F(SentPartsTest, aPartIsKeptAsLongAsItsMessageWaitsOrItsOutcomeIsKnown)
{
    const qint64 id = add(noon());
    send(id, 1);
    EXPECT_EQ(given(sent().prune(later(), 10)), 0);
    finish(id);
    EXPECT_EQ(given(sent().prune(later(), 10)), 0);
    EXPECT_EQ(rows("sent_part"), 1);
    EXPECT_EQ(given(m_store->outcomes().prune(later(), 10)), 1);
    EXPECT_EQ(given(sent().prune(noon(), 10)), 0) << "it left at that moment, not before";
    EXPECT_EQ(given(sent().prune(later(), 10)), 1);
    EXPECT_EQ(rows("sent_part"), 0);
}

TEST_F(SentPartsTest, partsOfNothingAreForgottenAFewAtATime)
{
    const qint64 kept = add(noon());
    send(kept, 9);
    for (int reference = 0; reference < 3; ++reference)
        send(1000 + reference, reference);
    EXPECT_EQ(given(sent().prune(later(), 2)), 2);
    EXPECT_EQ(given(sent().prune(later(), 2)), 1);
    EXPECT_EQ(given(sent().prune(later(), 2)), 0);
    EXPECT_EQ(given(sent().ofMessage(kept)).size(), 1);
}

TEST_F(SentPartsTest, reportsAreForgottenByTheirOwnTimeAFewAtATime)
{
    for (const QByteArray &digest : {"a"_ba, "b"_ba, "c"_ba})
        EXPECT_TRUE(given(sent().keepReport(digest, noon(), std::nullopt, "00")));
    EXPECT_TRUE(given(sent().keepReport("d"_ba, later(), std::nullopt, "00")));
    EXPECT_EQ(given(sent().prune(later(), 2)), 2);
    EXPECT_EQ(given(sent().prune(later(), 2)), 1);
    EXPECT_EQ(given(sent().prune(later(), 2)), 0);
    EXPECT_EQ(rows("status_report"), 1);
    EXPECT_TRUE(given(sent().hasReport("d"_ba)));
}

TEST_F(SentPartsTest, aStepSaysWhicheverWasMoreSoThatNothingStays)
{
    send(1000, 1);
    for (const QByteArray &digest : {"a"_ba, "b"_ba, "c"_ba})
        EXPECT_TRUE(given(sent().keepReport(digest, noon(), std::nullopt, "00")));
    EXPECT_EQ(given(sent().prune(later(), 10)), 3);
    for (int reference = 0; reference < 3; ++reference)
        send(1000 + reference, reference);
    EXPECT_TRUE(given(sent().keepReport("e"_ba, noon(), std::nullopt, "00")));
    EXPECT_EQ(given(sent().prune(later(), 10)), 3);
}

TEST_F(SentPartsTest, aReportIsKeptOnce)
{
    EXPECT_FALSE(given(sent().hasReport("a"_ba)));
    EXPECT_TRUE(given(sent().keepReport("a"_ba, noon(), std::nullopt, "00")));
    EXPECT_FALSE(given(sent().keepReport("a"_ba, noon(), std::nullopt, "00")));
    EXPECT_TRUE(given(sent().hasReport("a"_ba)));
}

TEST_F(SentPartsTest, aPartIsOpenUntilItsFinalReportForItsSimAndItsReference)
{
    const qint64 id = add(noon());
    send(id, 5);
    EXPECT_TRUE(given(sent().open(u"other"_s, 5)).isEmpty());
    EXPECT_TRUE(given(sent().open(u"sim"_s, 6)).isEmpty());
    const QList<OpenPart> open = given(sent().open(u"sim"_s, 5));
    ASSERT_EQ(open.size(), 1);
    EXPECT_EQ(open.constFirst().message, id);
    EXPECT_EQ(open.constFirst().message, id);
    done(sent().setState(open.constFirst().id, DeliveryState::Pending, false, 0x20, noon()));
    EXPECT_EQ(given(sent().open(u"sim"_s, 5)).size(), 1);
    done(sent().setState(open.constFirst().id, DeliveryState::Delivered, true, 0, noon()));
    EXPECT_TRUE(given(sent().open(u"sim"_s, 5)).isEmpty());
    const QList<PartState> states = given(sent().ofMessage(id));
    ASSERT_EQ(states.size(), 1);
    EXPECT_EQ(states.constFirst().state, DeliveryState::Delivered);
    EXPECT_EQ(states.constFirst().status, 0);
}

} // namespace

} // namespace norvane
