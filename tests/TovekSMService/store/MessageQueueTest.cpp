#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class MessageQueueTest : public StoreFixture
{};

QueueRow row(qint64 id, const QString &phone, const QString &text)
{
    return {u"1999-01-01T00:00:00"_s, phone, text, id};
}

TEST_F(MessageQueueTest, newStoreIsEmpty)
{
    EXPECT_EQ(m_store->queue().size(), 0);
    EXPECT_TRUE(given(m_store->queue().rows()).isEmpty());
    EXPECT_FALSE(given(m_store->queue().first()));
    EXPECT_FALSE(given(m_store->queue().firstDue()));
}

TEST_F(MessageQueueTest, queuedMessagesSurviveReopening)
{
    const qint64 id = add(noon(), u"+34600111222"_s, u"Olá \"ação\" €"_s);
    reopen();
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(given(m_store->queue().rows()),
              QList<QueueRow>({{noon(), u"+34600111222"_s, u"Olá \"ação\" €"_s, id}}));
}

TEST_F(MessageQueueTest, rowsComeByDateAndThenByQueueing)
{
    done(m_store->queue().add({{u"a"_s, {}}, {u"b"_s, {}}}, u"2024-05-02T00:00:00"_s));
    add(u"2024-05-01T23:59:59"_s, u"c"_s);
    add(u"2024-05-02T00:00:00"_s, u"d"_s);
    add(u"0999-12-31T23:59:59"_s, u"e"_s);
    EXPECT_EQ(phones().join(QString()), u"ecabd"_s);
    reopen();
    EXPECT_EQ(phones().join(QString()), u"ecabd"_s);
}

TEST_F(MessageQueueTest, idsAreNeverGivenTwice)
{
    const qint64 first = add(noon());
    done(m_store->queue().clear());
    reopen();
    EXPECT_GT(add(noon()), first);
}

TEST_F(MessageQueueTest, nullTextsAreKeptAsEmptyOnes)
{
    done(m_store->queue().add({{QString(), QString()}}, QString()));
    reopen();
    ASSERT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(given(m_store->queue().rows()).constFirst().phone, QString());
    EXPECT_EQ(given(m_store->queue().rows()).constFirst().message, QString());
    EXPECT_EQ(given(m_store->queue().rows()).constFirst().deliveryDate, QString());

    const qint64 id = given(m_store->queue().rows()).constFirst().id;
    EXPECT_TRUE(given(m_store->queue().update({{QString(), QString(), QString(), id}}, {})));
    EXPECT_EQ(m_store->queue().size(), 1);
}

TEST_F(MessageQueueTest, longAndStrangeTextsAreKeptLetterForLetter)
{
    const QString odd =
        u"a\tb\r\n'; DROP TABLE message; -- \U0001F600 \u200D "_s + QString(5000, u'ñ');
    add(noon(), u"call me"_s, odd);
    reopen();
    EXPECT_EQ(given(m_store->queue().rows()).constFirst().message, odd);
    EXPECT_EQ(given(m_store->queue().rows()).constFirst().phone, u"call me"_s);
}

TEST_F(MessageQueueTest, anEmptyListChangesNothing)
{
    done(m_store->queue().add({}, noon()));
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(MessageQueueTest, clearRemovesAllThatWaits)
{
    add(noon());
    add(QString());
    done(m_store->queue().clear());
    EXPECT_EQ(m_store->queue().size(), 0);
    reopen();
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(MessageQueueTest, clearLeavesTheMessageInProgress)
{
    const qint64 leaving = add(noon(), u"leaving"_s);
    const qint64 between = add(noon(), u"between"_s);
    add(noon(), u"waiting"_s);
    done(m_store->queue().begin({{leaving, std::nullopt, {}}}));
    done(m_store->queue().begin({{between, 7, {}}}));
    done(m_store->queue().endPart(between, 1));
    done(m_store->queue().clear());
    EXPECT_EQ(m_store->queue().size(), 2);
    EXPECT_EQ(phones(), QStringList({u"leaving"_s, u"between"_s}));
}

TEST_F(MessageQueueTest, updateChangesPhoneAndTextAndNothingElse)
{
    const qint64 id = add(noon(), u"old"_s, u"old"_s);
    add(u"2024-05-01T12:00:01"_s, u"other"_s);
    EXPECT_TRUE(given(m_store->queue().update({row(id, u"new"_s, u"words"_s)}, {})));
    reopen();
    ASSERT_EQ(m_store->queue().size(), 2);
    EXPECT_EQ(given(m_store->queue().rows()).at(0), (QueueRow{noon(), u"new"_s, u"words"_s, id}));
    EXPECT_EQ(given(m_store->queue().rows()).at(1).phone, u"other"_s);
}

TEST_F(MessageQueueTest, updateRemovesWhatWasDeletedAndLeavesWhatCameSince)
{
    const qint64 first = add(noon(), u"first"_s);
    const qint64 second = add(noon(), u"second"_s);
    add(noon(), u"since"_s);
    EXPECT_TRUE(given(m_store->queue().update({}, {first, second})));
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(phones(), QStringList({u"since"_s}));
    reopen();
    EXPECT_EQ(m_store->queue().size(), 1);
}

TEST_F(MessageQueueTest, updateNeverTouchesTheMessageInProgress)
{
    for (const bool isBetweenParts : {false, true}) {
        SCOPED_TRACE(isBetweenParts);
        const qint64 id = add(noon(), u"600"_s, u"told"_s);
        done(m_store->queue().begin({{id, 3, {}}}));
        if (isBetweenParts)
            done(m_store->queue().endPart(id, 1));
        EXPECT_FALSE(given(m_store->queue().update({row(id, u"9"_s, u"new"_s)}, {})));
        EXPECT_FALSE(given(m_store->queue().update({}, {id})));
        EXPECT_EQ(m_store->queue().size(), 1);
        EXPECT_EQ(given(m_store->queue().rows()).constFirst().phone, u"600"_s);
        EXPECT_EQ(stored(id, "parts_sent").toInt(), isBetweenParts ? 1 : 0);
        EXPECT_EQ(stored(id, "reference").toInt(), 3);
        done(m_store->queue().finish(id, 1, 1, noon(), true));
    }
}

TEST_F(MessageQueueTest, rowsInTimeAreChangedBesideThoseTooLate)
{
    const qint64 late = add(noon(), u"late"_s);
    const qint64 gone = add(noon(), u"gone"_s);
    const qint64 edited = add(noon(), u"edited"_s);
    done(m_store->queue().begin({{late, std::nullopt, {}}}));
    EXPECT_FALSE(given(
        m_store->queue().update({row(late, {}, {}), row(edited, u"new"_s, {})}, {late, gone})));
    EXPECT_EQ(phones(), QStringList({u"late"_s, u"new"_s}));
}

TEST_F(MessageQueueTest, messagesThatHaveLeftAreNeitherRevivedNorDeletedInTime)
{
    for (const qint32 code : {1, -36}) {
        SCOPED_TRACE(code);
        const qint64 id = add(noon());
        done(m_store->queue().finish(id, code, std::nullopt, noon(), true));
        EXPECT_FALSE(given(m_store->queue().update({row(id, u"9"_s, u"new"_s)}, {})));
        EXPECT_FALSE(given(m_store->queue().update({}, {id})));
        EXPECT_EQ(m_store->queue().size(), 0);
        EXPECT_TRUE(given(m_store->queue().rows()).isEmpty());
    }
}

TEST_F(MessageQueueTest, deletingWhatSomeoneElseDeletedIsInTimeAndChangingItIsNot)
{
    const qint64 id = add(noon());
    EXPECT_TRUE(given(m_store->queue().update({}, {id})));
    EXPECT_TRUE(given(m_store->queue().update({}, {id})));
    EXPECT_FALSE(given(m_store->queue().update({row(id, u"9"_s, {})}, {})));
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(MessageQueueTest, aMessageSentInPartBeginsAnewOnlyWhenItSaysSomethingElse)
{
    const qint64 id = add(noon(), u"600"_s, u"told"_s);
    done(m_store->queue().begin({{id, 3, {}}}));
    done(m_store->queue().endPart(id, 1));
    done(m_store->queue().begin({{id, 3, {}}}));
    done(m_store->queue().postpone(id, 2, noon()));
    done(m_store->queue().releaseBetweenParts());

    EXPECT_TRUE(given(m_store->queue().update({row(id, u"600"_s, u"told"_s)}, {})));
    std::optional<StoredMessage> message = given(m_store->queue().first());
    EXPECT_EQ(message->partsSent, 1);
    EXPECT_EQ(message->reference, quint16{3});
    EXPECT_EQ(message->attempts, 2);

    EXPECT_TRUE(given(m_store->queue().update({row(id, u"601"_s, u"told"_s)}, {})));
    message = given(m_store->queue().first());
    EXPECT_EQ(message->partsSent, 0);
    EXPECT_FALSE(message->reference);
    EXPECT_EQ(message->attempts, 0);
}

TEST_F(MessageQueueTest, aRefusedMessageIsAFailureThatNeverWaited)
{
    add(noon(), u"waits"_s);
    const qint64 outcome = given(
        m_store->queue().refuse({u"2024-06-01T00:00:00"_s, u"600"_s, u"offer"_s, 0}, -51, noon()));
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(phones(), QStringList{u"waits"_s});
    const QList<Outcome> failures = given(m_store->outcomes().unreportedFailures());
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(failures.constFirst().id, outcome);
    EXPECT_EQ(failures.constFirst().code, -51);
    const QList<OutcomeRow> rows = given(m_store->outcomes().list({}, 0, 10));
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.constFirst(), (OutcomeRow{rows.constFirst().id,
                                             noon(),
                                             u"2024-06-01T00:00:00"_s,
                                             u"600"_s,
                                             u"offer"_s,
                                             -51,
                                             QString(),
                                             DeliveryState::None,
                                             {}}));
    reopen();
    EXPECT_EQ(m_store->queue().size(), 1);
}

TEST_F(MessageQueueTest, aRefusalThatCannotBeKeptLeavesNothing)
{
    OtherConnection(file()).run(u"DROP TABLE outcome"_s);
    EXPECT_FALSE(m_store->queue().refuse({noon(), u"600"_s, {}, 0}, -51, noon()));
    EXPECT_EQ(m_store->queue().size(), 0);
    EXPECT_EQ(phones(), QStringList());
}

TEST_F(MessageQueueTest, aRefusalOfWhatFailsAsAWholeIsTakenBack)
{
    add(noon());
    const StoreResult<> added = m_store->database().together([&]() -> StoreResult<> {
        done(m_store->queue().refuse({noon(), u"600"_s, {}, 0}, -51, noon()));
        return failed(StoreFailure(StoreFailure::Kind::Other, u"no"_s));
    });
    EXPECT_FALSE(added);
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_TRUE(given(m_store->outcomes().list({}, 0, 10)).isEmpty());
}

class MessageQueueOddDate : public StoreFixture, public testing::WithParamInterface<const char *>
{};

TEST_P(MessageQueueOddDate, isKeptAsGivenAndGoesBeforeEveryDate)
{
    const QString date = QString::fromUtf8(GetParam());
    add(u"0001-01-01T00:00:00"_s, u"dated"_s);
    add(date, u"odd"_s);
    EXPECT_EQ(phones(), QStringList({u"odd"_s, u"dated"_s}));
    EXPECT_EQ(given(m_store->queue().rows()).constFirst().deliveryDate, date);
    ASSERT_TRUE(given(m_store->queue().first()));
    EXPECT_TRUE(given(m_store->queue().first())->dateIsOdd);
    EXPECT_EQ(given(m_store->queue().first())->deliveryDate, date);
    EXPECT_EQ(given(m_store->queue().firstDue()), QString());
}

INSTANTIATE_TEST_SUITE_P(
    Dates, MessageQueueOddDate,
    testing::Values("", "tomorrow", "2024-02-30T10:00:00", "2024-05-01 10:00:00",
                    "2024-05-01T10:00", "2024-05-01T24:00:00", "2024-05-01T10:00:60",
                    "2024-05-01T10:00.50", "2024-05-01T10:00:00Z", "2024-05-01T10:00:00+02:00",
                    "2024-05-01T10:00:00.000", "2024-5-1T10:00:00", "0000-01-01T00:00:00",
                    "12024-05-01T10:00:00", "2024-05-01t10:00:00", " 2024-05-01T10:00:00",
                    "2024-05-01T10:00:00\n", "٢٠٢٤-٠٥-٠١T10:00:00"));

class MessageQueueDate : public StoreFixture, public testing::WithParamInterface<const char *>
{};

TEST_P(MessageQueueDate, isTakenAsADateWhateverTheZoneSays)
{
    const QString date = QLatin1String(GetParam());
    add(date);
    EXPECT_FALSE(given(m_store->queue().first())->dateIsOdd);
    EXPECT_EQ(given(m_store->queue().firstDue()), date);
}

// The third and fourth lie in hours that the clock change of many places skips or repeats.
INSTANTIATE_TEST_SUITE_P(Dates, MessageQueueDate,
                         testing::Values("2024-02-29T23:59:59", "0001-01-01T00:00:00",
                                         "2024-03-31T02:30:00", "2024-10-27T02:30:00",
                                         "9999-12-31T23:59:59"));

} // namespace

} // namespace norvane
