#include "TovekSMService/store/StoreFixture.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoreSending : public StoreFixture
{
protected:
    QVariantList outcome(qint64 message) const
    {
        OtherConnection other(file());
        return other
            .rows(u"SELECT delivery_date, phone, text, code, network_reference, at, "
                  "reported FROM outcome WHERE message_id = %1"_s.arg(message))
            .value(0);
    }
};

TEST_F(StoreSending, firstIsTheEarliestAndAmongEqualsTheOneQueuedFirst)
{
    add(u"2024-05-02T00:00:00"_s, u"later"_s);
    const qint64 id = add(noon(), u"600"_s, u"words"_s);
    add(noon(), u"601"_s);
    const std::optional<StoredMessage> first = m_store->first();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->id, id);
    EXPECT_EQ(first->deliveryDate, noon());
    EXPECT_FALSE(first->dateIsOdd);
    EXPECT_EQ(first->phone, u"600"_s);
    EXPECT_EQ(first->text, u"words"_s);
    EXPECT_EQ(first->attempts, 0);
    EXPECT_EQ(first->partsSent, 0);
    EXPECT_FALSE(first->reference);
    EXPECT_EQ(m_store->firstDue(), noon());
}

TEST_F(StoreSending, aPartAboutToLeaveIsOnDiskWithItsHash)
{
    const qint64 id = add(noon());
    m_store->beginPart(id, 300, "hash");
    EXPECT_EQ(stored(id, "state").toInt(), 1);
    EXPECT_EQ(stored(id, "part_hash").toByteArray(), "hash");
    reopen();
    const QList<StoredMessage> interrupted = m_store->interrupted();
    ASSERT_EQ(interrupted.size(), 1);
    EXPECT_EQ(interrupted.constFirst().id, id);
    EXPECT_EQ(interrupted.constFirst().reference, quint16{300});
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_EQ(m_store->rows().size(), 1);
}

TEST_F(StoreSending, whatIsInDoubtIsNeverTheOneToGoNext)
{
    const qint64 id = add(noon());
    m_store->beginPart(id, std::nullopt, {});
    EXPECT_FALSE(m_store->first());
    const qint64 other = add(u"2024-05-02T00:00:00"_s);
    ASSERT_TRUE(m_store->first());
    EXPECT_EQ(m_store->first()->id, other);
}

TEST_F(StoreSending, aMessageSentInPartStaysInProgressWhileItWaits)
{
    const qint64 id = add(noon());
    for (const bool isPostponed : {false, true}) {
        m_store->beginPart(id, 7, {});
        m_store->endPart(id, 1);
        m_store->beginPart(id, 7, {});
        if (isPostponed)
            m_store->postpone(id, 1, noon());
        else
            m_store->cancelPart(id);
        m_store->clear();
        EXPECT_FALSE(m_store->update({{noon(), u"9"_s, QString(), id}}, {id}));
        EXPECT_EQ(m_store->size(), 1);
        EXPECT_EQ(m_store->first()->partsSent, 1);
    }
    // An engine that is stopped holds nothing in progress, and one that is started again does.
    m_store->releaseBetweenParts();
    EXPECT_EQ(stored(id, "state").toInt(), 0);
    m_store->holdPartlySent();
    EXPECT_EQ(stored(id, "state").toInt(), 2);
}

TEST_F(StoreSending, idsCanBeginBeyondThoseOfAnotherStore)
{
    m_store->beginIdsAt(1000);
    EXPECT_EQ(add(noon()), 1001);
    m_store->beginIdsAt(500);
    EXPECT_EQ(add(noon()), 1002);
    m_store->beginIdsAt(2000);
    EXPECT_EQ(add(noon()), 2001);
}

TEST_F(StoreSending, idsOfOutcomesCanBeginThereToo)
{
    const auto fail = [this] {
        return m_store->finish(add(noon()), -36, std::nullopt, noon(), false);
    };
    EXPECT_EQ(fail(), 1);
    m_store->beginIdsAt(1000);
    EXPECT_EQ(fail(), 1001);
}

TEST_F(StoreSending, anOutcomeIsKnownByItsId)
{
    const qint64 first = add(noon());
    const qint64 second = add(noon());
    const qint64 outcome = m_store->finish(first, -36, std::nullopt, noon(), false);
    const qint64 other = m_store->finish(second, -36, std::nullopt, noon(), false);
    m_store->markReported({outcome});
    const QList<Outcome> left = m_store->unreportedFailures();
    ASSERT_EQ(left.size(), 1);
    EXPECT_EQ(left.constFirst().id, other);
}

TEST_F(StoreSending, aMessageOfOnePartKeepsNoReference)
{
    const qint64 id = add(noon());
    m_store->beginPart(id, std::nullopt, {});
    m_store->cancelPart(id);
    EXPECT_TRUE(stored(id, "reference").isNull());
    EXPECT_FALSE(m_store->first()->reference);
}

TEST_F(StoreSending, aMessageBetweenItsPartsIsNotInterrupted)
{
    const qint64 id = add(noon());
    m_store->beginPart(id, 0xFFFF, {});
    m_store->endPart(id, 2);
    reopen();
    EXPECT_TRUE(m_store->interrupted().isEmpty());
    EXPECT_EQ(m_store->first()->partsSent, 2);
    EXPECT_EQ(m_store->first()->reference, quint16{0xFFFF});
}

TEST_F(StoreSending, aPartTakenBackWaitsAgain)
{
    const qint64 id = add(noon());
    m_store->beginPart(id, 5, {});
    m_store->cancelPart(id);
    EXPECT_TRUE(m_store->interrupted().isEmpty());
    EXPECT_EQ(m_store->first()->reference, quint16{5});
    EXPECT_TRUE(m_store->update({}, {id}));
    EXPECT_EQ(m_store->size(), 0);
}

TEST_F(StoreSending, releaseLetsMessagesBetweenPartsWaitAndNotOneThatIsLeaving)
{
    const qint64 between = add(noon());
    const qint64 leaving = add(noon());
    m_store->beginPart(between, 5, {});
    m_store->endPart(between, 1);
    m_store->beginPart(leaving, std::nullopt, {});
    m_store->releaseBetweenParts();
    EXPECT_EQ(stored(between, "state").toInt(), 0);
    EXPECT_EQ(stored(between, "parts_sent").toInt(), 1);
    EXPECT_EQ(stored(leaving, "state").toInt(), 1);
}

TEST_F(StoreSending, aPostponedMessageGoesBehindTheOthersAndKeepsItsParts)
{
    const qint64 id = add(noon(), u"postponed"_s);
    add(u"2024-05-01T12:00:30"_s, u"other"_s);
    m_store->beginPart(id, 9, {});
    m_store->endPart(id, 1);
    m_store->beginPart(id, 9, {});
    m_store->postpone(id, 3, u"2024-05-01T12:00:31"_s);
    reopen();
    EXPECT_TRUE(m_store->interrupted().isEmpty());
    EXPECT_EQ(phones(), QStringList({u"other"_s, u"postponed"_s}));
    EXPECT_EQ(m_store->rows().at(1).deliveryDate, u"2024-05-01T12:00:31"_s);
    EXPECT_TRUE(m_store->update({}, {m_store->rows().at(0).id}));
    const std::optional<StoredMessage> first = m_store->first();
    EXPECT_EQ(first->attempts, 3);
    EXPECT_EQ(first->partsSent, 1);
    EXPECT_EQ(first->reference, quint16{9});
}

TEST_F(StoreSending, aMessageThatWasSentLeavesAnOutcome)
{
    const qint64 id = add(noon(), u"600"_s, u"words"_s);
    add(noon());
    m_store->beginPart(id, std::nullopt, {});
    m_store->finish(id, 1, 255, u"2024-05-01T12:00:07"_s, true);
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_NE(m_store->first()->id, id);
    reopen();
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_EQ(outcome(id),
              QVariantList({noon(), u"600"_s, u"words"_s, 1, 255, u"2024-05-01T12:00:07"_s, 1}));
    EXPECT_TRUE(m_store->unreportedFailures().isEmpty());
}

TEST_F(StoreSending, finishingWhatIsNotThereChangesNothing)
{
    const qint64 id = add(noon());
    m_store->finish(id + 1, -1, std::nullopt, noon(), false);
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_TRUE(m_store->unreportedFailures().isEmpty());
}

TEST_F(StoreSending, failuresThatNobodyHeardAreKeptInOrderUntilTheyAreReported)
{
    const qint64 second = add(noon(), u"2"_s, u"b"_s);
    const qint64 first = add(noon(), u"1"_s, u"a"_s);
    const qint64 heard = add(noon());
    m_store->finish(first, -39, std::nullopt, noon(), false);
    m_store->finish(second, -17, std::nullopt, noon(), false);
    m_store->finish(heard, -17, std::nullopt, noon(), true);
    EXPECT_TRUE(outcome(first).value(4).isNull());
    reopen();

    QList<Outcome> failures = m_store->unreportedFailures();
    ASSERT_EQ(failures.size(), 2);
    EXPECT_EQ(failures.at(0).phone, u"1"_s);
    EXPECT_EQ(failures.at(0).text, u"a"_s);
    EXPECT_EQ(failures.at(0).code, -39);
    EXPECT_EQ(failures.at(1).phone, u"2"_s);
    EXPECT_EQ(failures.at(1).code, -17);

    m_store->markReported({});
    EXPECT_EQ(m_store->unreportedFailures().size(), 2);
    m_store->markReported({failures.at(0).id});
    reopen();
    failures = m_store->unreportedFailures();
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(failures.constFirst().phone, u"2"_s);
}

TEST_F(StoreSending, referencesCountOnAcrossReopeningAndWrap)
{
    const quint16 first = m_store->nextReference();
    reopen();
    EXPECT_EQ(m_store->nextReference(), first + 1);
    OtherConnection(file()).run(
        u"UPDATE setting SET value = '65534' WHERE name = 'concatenation_reference'"_s);
    EXPECT_EQ(m_store->nextReference(), 65535);
    EXPECT_EQ(m_store->nextReference(), 0);
    EXPECT_EQ(m_store->nextReference(), 1);
}

} // namespace

} // namespace norvane
