#include "TovekSMService/store/StoreFixture.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class MessageQueueSending : public StoreFixture
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

TEST_F(MessageQueueSending, firstIsTheEarliestAndAmongEqualsTheOneQueuedFirst)
{
    add(u"2024-05-02T00:00:00"_s, u"later"_s);
    const qint64 id = add(noon(), u"600"_s, u"words"_s);
    add(noon(), u"601"_s);
    const std::optional<StoredMessage> first = given(m_store->queue().first());
    ASSERT_TRUE(first);
    EXPECT_EQ(first->id, id);
    EXPECT_EQ(first->deliveryDate, noon());
    EXPECT_FALSE(first->dateIsOdd);
    EXPECT_EQ(first->phone, u"600"_s);
    EXPECT_EQ(first->text, u"words"_s);
    EXPECT_EQ(first->attempts, 0);
    EXPECT_EQ(first->partsSent, 0);
    EXPECT_FALSE(first->reference);
    EXPECT_EQ(given(m_store->queue().firstDue()), noon());
}

TEST_F(MessageQueueSending, aPartAboutToLeaveIsOnDiskWithItsHash)
{
    const qint64 id = add(noon());
    done(m_store->queue().begin({{id, 300, "hash"}}));
    EXPECT_EQ(stored(id, "state").toInt(), 1);
    EXPECT_EQ(stored(id, "part_hash").toByteArray(), "hash");
    reopen();
    const QList<StoredMessage> interrupted = given(m_store->queue().interrupted());
    ASSERT_EQ(interrupted.size(), 1);
    EXPECT_EQ(interrupted.constFirst().id, id);
    EXPECT_EQ(interrupted.constFirst().reference, quint16{300});
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(given(m_store->queue().rows()).size(), 1);
}

TEST_F(MessageQueueSending, whatIsInDoubtIsNeverTheOneToGoNext)
{
    const qint64 id = add(noon());
    done(m_store->queue().begin({{id, std::nullopt, {}}}));
    EXPECT_FALSE(given(m_store->queue().first()));
    const qint64 other = add(u"2024-05-02T00:00:00"_s);
    ASSERT_TRUE(given(m_store->queue().first()));
    EXPECT_EQ(given(m_store->queue().first())->id, other);
}

TEST_F(MessageQueueSending, aMessageSentInPartStaysInProgressWhileItWaits)
{
    const qint64 id = add(noon());
    for (const bool isPostponed : {false, true}) {
        done(m_store->queue().begin({{id, 7, {}}}));
        done(m_store->queue().endPart(id, 1));
        done(m_store->queue().begin({{id, 7, {}}}));
        if (isPostponed)
            done(m_store->queue().postpone(id, 1, noon()));
        else
            done(m_store->queue().cancel({id}));
        done(m_store->queue().clear());
        EXPECT_FALSE(given(m_store->queue().update({{noon(), u"9"_s, QString(), id}}, {id})));
        EXPECT_EQ(m_store->queue().size(), 1);
        EXPECT_EQ(given(m_store->queue().first())->partsSent, 1);
    }
    // An engine that is stopped holds nothing in progress, and one that is started again does.
    done(m_store->queue().releaseBetweenParts());
    EXPECT_EQ(stored(id, "state").toInt(), 0);
    done(m_store->queue().holdPartlySent());
    EXPECT_EQ(stored(id, "state").toInt(), 2);
}

TEST_F(MessageQueueSending, aMessageOfOnePartKeepsNoReference)
{
    const qint64 id = add(noon());
    done(m_store->queue().begin({{id, std::nullopt, {}}}));
    done(m_store->queue().cancel({id}));
    EXPECT_TRUE(stored(id, "reference").isNull());
    EXPECT_FALSE(given(m_store->queue().first())->reference);
}

TEST_F(MessageQueueSending, aMessageBetweenItsPartsIsNotInterrupted)
{
    const qint64 id = add(noon());
    done(m_store->queue().begin({{id, 0xFFFF, {}}}));
    done(m_store->queue().endPart(id, 2));
    reopen();
    EXPECT_TRUE(given(m_store->queue().interrupted()).isEmpty());
    EXPECT_EQ(given(m_store->queue().first())->partsSent, 2);
    EXPECT_EQ(given(m_store->queue().first())->reference, quint16{0xFFFF});
}

TEST_F(MessageQueueSending, aPartTakenBackWaitsAgain)
{
    const qint64 id = add(noon());
    done(m_store->queue().begin({{id, 5, {}}}));
    done(m_store->queue().cancel({id}));
    EXPECT_TRUE(given(m_store->queue().interrupted()).isEmpty());
    EXPECT_EQ(given(m_store->queue().first())->reference, quint16{5});
    EXPECT_TRUE(given(m_store->queue().update({}, {id})));
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(MessageQueueSending, releaseLetsMessagesBetweenPartsWaitAndNotOneThatIsLeaving)
{
    const qint64 between = add(noon());
    const qint64 leaving = add(noon());
    done(m_store->queue().begin({{between, 5, {}}}));
    done(m_store->queue().endPart(between, 1));
    done(m_store->queue().begin({{leaving, std::nullopt, {}}}));
    done(m_store->queue().releaseBetweenParts());
    EXPECT_EQ(stored(between, "state").toInt(), 0);
    EXPECT_EQ(stored(between, "parts_sent").toInt(), 1);
    EXPECT_EQ(stored(leaving, "state").toInt(), 1);
}

TEST_F(MessageQueueSending, aPostponedMessageGoesBehindTheOthersAndKeepsItsParts)
{
    const qint64 id = add(noon(), u"postponed"_s);
    add(u"2024-05-01T12:00:30"_s, u"other"_s);
    done(m_store->queue().begin({{id, 9, {}}}));
    done(m_store->queue().endPart(id, 1));
    done(m_store->queue().begin({{id, 9, {}}}));
    done(m_store->queue().postpone(id, 3, u"2024-05-01T12:00:31"_s));
    reopen();
    EXPECT_TRUE(given(m_store->queue().interrupted()).isEmpty());
    EXPECT_EQ(phones(), QStringList({u"other"_s, u"postponed"_s}));
    EXPECT_EQ(given(m_store->queue().rows()).at(1).deliveryDate, u"2024-05-01T12:00:31"_s);
    EXPECT_TRUE(given(m_store->queue().update({}, {given(m_store->queue().rows()).at(0).id})));
    const std::optional<StoredMessage> first = given(m_store->queue().first());
    EXPECT_EQ(first->attempts, 3);
    EXPECT_EQ(first->partsSent, 1);
    EXPECT_EQ(first->reference, quint16{9});
}

TEST_F(MessageQueueSending, aMessageThatWasSentLeavesAnOutcome)
{
    const qint64 id = add(noon(), u"600"_s, u"words"_s);
    add(noon());
    done(m_store->queue().begin({{id, std::nullopt, {}}}));
    done(m_store->queue().finish(id, 1, 255, u"2024-05-01T12:00:07"_s, true));
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_NE(given(m_store->queue().first())->id, id);
    reopen();
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(outcome(id),
              QVariantList({noon(), u"600"_s, u"words"_s, 1, 255, u"2024-05-01T12:00:07"_s, 1}));
    EXPECT_TRUE(given(m_store->outcomes().unreportedFailures()).isEmpty());
}

TEST_F(MessageQueueSending, finishingWhatIsNotThereChangesNothing)
{
    const qint64 id = add(noon());
    done(m_store->queue().finish(id + 1, -1, std::nullopt, noon(), false));
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_TRUE(given(m_store->outcomes().unreportedFailures()).isEmpty());
}

TEST_F(MessageQueueSending, thePlaceInTheQueueMovesAndTheOriginalDateStays)
{
    const qint64 id = add(noon(), u"600"_s);
    const QString later = u"2024-05-01T13:00:00"_s;
    done(m_store->queue().begin({{id, std::nullopt, {}}}));
    done(m_store->queue().postpone(id, 1, later));
    reopen();
    EXPECT_EQ(given(m_store->queue().first())->deliveryDate, later);
    EXPECT_EQ(given(m_store->queue().first())->originalDate, noon());
    done(m_store->queue().finish(id, 1, 5, later, true));
    EXPECT_EQ(OtherConnection(file()).value(u"SELECT delivery_date FROM outcome"_s), noon());
}

} // namespace

} // namespace norvane
