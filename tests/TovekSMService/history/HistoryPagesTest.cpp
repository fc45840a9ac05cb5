#include "TovekSMService/history/HistoryFixture.h"

#include "contract/ErrorCodes.h"

#include <QSet>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Ids = QList<qint64>;

class HistoryPagesTest : public HistoryFixture
{
protected:
    /// All pages of so many rows, one behind the other.
    Ids walked(
        const HistoryFilter &filter, int maxRows, const std::function<void()> &between = [] {})
    {
        Ids ids;
        HistoryCursor after;
        for (int pages = 0; pages < 10'000; ++pages) {
            const HistoryPage next = page(filter, after, {}, maxRows);
            EXPECT_LE(next.rows.size(), maxRows);
            ids += idsOf(next);
            if (!next.next)
                return ids;
            after = *next.next;
            between();
        }
        ADD_FAILURE() << "the list has no end";
        return ids;
    }
};

TEST_F(HistoryPagesTest, aRowHoldsWhatIsKnownOfAMessage)
{
    const qint64 sent = leave(u"2026-01-01T10:00:00"_s, 1, DeliveryState::Delivered, u"601"_s,
                              u"uno"_s, u"2026-01-01T10:00:05"_s);
    const qint64 failed = leave(u"2026-01-01T11:00:00"_s, ErrorCode::noRespond);
    const qint64 waiting = wait(u"2026-01-01T12:00:00"_s, u"602"_s, u"dos"_s);
    const QList<HistoryRow> expected = {{waiting,
                                         u"2026-01-01T12:00:00"_s,
                                         noon(),
                                         u"602"_s,
                                         u"dos"_s,
                                         MessageState::Waiting,
                                         0,
                                         {}},
                                        {failed,
                                         u"2026-01-01T11:00:00"_s,
                                         noon(),
                                         u"600"_s,
                                         u"text"_s,
                                         MessageState::InDoubt,
                                         -39,
                                         {}},
                                        {sent, u"2026-01-01T10:00:00"_s, noon(), u"601"_s, u"uno"_s,
                                         MessageState::Delivered, 1, u"2026-01-01T10:00:05"_s}};
    EXPECT_EQ(page().rows, expected);
    EXPECT_FALSE(page().next);
}

TEST_F(HistoryPagesTest, nothingIsALastPage)
{
    EXPECT_TRUE(page().rows.isEmpty());
    EXPECT_FALSE(page().next);
    EXPECT_TRUE(page({}, HistoryCursor{0, 0}).rows.isEmpty());
}

TEST_F(HistoryPagesTest, messagesAreFoundByWhatBecameOfThem)
{
    const qint64 waiting = wait(u"2026-01-02"_s);
    const qint64 leaving = wait(u"2026-01-02"_s);
    done(m_store->queue().begin({{leaving, std::nullopt, "hash"}}));
    const QString at = u"2026-01-01"_s;
    const qint64 plain = leave(at);
    const qint64 pending = leave(at, 1, DeliveryState::Pending);
    const qint64 unknown = leave(at, 1, DeliveryState::Unknown);
    const qint64 delivered = leave(at, 1, DeliveryState::Delivered);
    const qint64 refused = leave(at, 1, DeliveryState::Refused);
    const qint64 failed = leave(at, -36);
    const qint64 doubt = leave(at, -39);
    using State = MessageState;
    const struct
    {
        const char *name;
        MessageStates states;
        Ids ids;
    } rows[] = {
        {"none", {}, {}},
        {"waiting, and being sent", State::Waiting, {leaving, waiting}},
        {"sent", State::Sent, {unknown, pending, plain}},
        {"delivered", State::Delivered, {delivered}},
        {"refused", State::Refused, {refused}},
        {"failed", State::Failed, {failed}},
        {"in doubt", State::InDoubt, {doubt}},
        {"unsuccessful", State::Refused | State::Failed | State::InDoubt, {doubt, failed, refused}},
        {"two of them", State::Waiting | State::Delivered, {leaving, waiting, delivered}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        HistoryFilter filter;
        filter.states = row.states;
        EXPECT_EQ(idsOf(page(filter)), row.ids);
    }
}

TEST_F(HistoryPagesTest, queueAndOutcomesAreOneListByTheirMoments)
{
    const qint64 old = wait(u""_s);
    const qint64 first = leave(u"2026-01-01T10:00:00"_s);
    const qint64 second = wait(u"2026-01-01T10:00:01"_s);
    const qint64 third = leave(u"2026-01-01T10:00:02"_s);
    const qint64 fourth = leave(u"2026-01-01T10:00:03"_s);
    const qint64 fifth = wait(u"2026-01-01T10:00:03"_s);
    const Ids expected = {fifth, fourth, third, second, first, old};
    EXPECT_EQ(idsOf(page()), expected);
    for (int maxRows = 1; maxRows < 7; ++maxRows)
        EXPECT_EQ(walked({}, maxRows), expected) << maxRows;
}

TEST_F(HistoryPagesTest, outcomesAreInTheOrderInWhichTheyCameAboutWhenTheClockGoesBack)
{
    const qint64 before = leave(u"2026-10-25T02:59:59"_s);
    const qint64 behind = leave(u"2026-10-25T02:00:00"_s);
    const qint64 later = leave(u"2026-10-25T02:30:00"_s);
    EXPECT_EQ(idsOf(page()), Ids({later, behind, before}));
    EXPECT_EQ(walked({}, 1), Ids({later, behind, before}));
}

TEST_F(HistoryPagesTest, aWalkShowsEachRowThatStaysOnceWhileOthersAreAdded)
{
    Ids present;
    for (int number = 0; number < 10; ++number) {
        present.prepend(leave(u"2026-01-01T10:%1:00"_s.arg(number + 10)));
        present.prepend(wait(u"2026-01-01T10:%1:30"_s.arg(number + 10)));
    }
    EXPECT_EQ(walked({}, 3,
                     [&] {
                         wait(u"2026-01-02"_s);
                         leave(u"2026-01-02"_s);
                     }),
              present);
}

TEST_F(HistoryPagesTest, aPageIsReadAgainWithWhatCameOnItsTop)
{
    Ids ids;
    for (int number = 0; number < 6; ++number)
        ids.prepend(leave(u"2026-01-01T10:00:0%1"_s.arg(number)));
    const HistoryPage first = page({}, {}, {}, 2);
    ASSERT_TRUE(first.next);
    const HistoryPage second = page({}, *first.next, {}, 2);
    ASSERT_TRUE(second.next);
    const qint64 fresh = wait(u"2026-01-02"_s);
    EXPECT_EQ(idsOf(page({}, {}, first.next)), Ids({fresh, ids.at(0), ids.at(1)}));
    EXPECT_FALSE(page({}, {}, first.next).next);
    EXPECT_EQ(idsOf(page({}, *first.next, second.next)), Ids({ids.at(2), ids.at(3)}));
    const HistoryPage part = page({}, {}, second.next, 4);
    EXPECT_EQ(idsOf(part), Ids({fresh, ids.at(0), ids.at(1), ids.at(2)}));
    ASSERT_TRUE(part.next);
    EXPECT_EQ(idsOf(page({}, *part.next, second.next)), Ids({ids.at(3)}));
    EXPECT_TRUE(page({}, *second.next, first.next).rows.isEmpty());
}

TEST_F(HistoryPagesTest, aMessageIsInTheListWhereverItIs)
{
    const qint64 id = wait(u"2026-01-01"_s);
    const HistoryPage before = page();
    done(m_store->queue().finish(id, 1, 7, u"2026-01-02"_s, true));
    EXPECT_EQ(idsOf(before), Ids({id}));
    EXPECT_EQ(idsOf(page()), Ids({id}));
}

TEST_F(HistoryPagesTest, theEndOfARangeIsNotInIt)
{
    const qint64 old = wait(u""_s);
    const qint64 one = leave(u"2026-01-01T10:00:00"_s);
    const qint64 two = leave(u"2026-01-02T10:00:00"_s);
    const qint64 three = leave(u"2026-01-03T10:00:00"_s);
    const qint64 four = wait(u"2026-01-03T11:00:00"_s);
    const struct
    {
        const char *name;
        QString from;
        QString to;
        Ids ids;
    } rows[] = {
        {"no bound", {}, {}, {four, three, two, one, old}},
        {"from a day on", u"2026-01-02"_s, {}, {four, three, two}},
        {"before a day", {}, u"2026-01-02"_s, {one, old}},
        {"a day", u"2026-01-02"_s, u"2026-01-03"_s, {two}},
        {"up to a moment", u"2026-01-01"_s, u"2026-01-02T10:00:00"_s, {one}},
        {"behind everything", u"2027"_s, {}, {}},
        {"before everything", {}, u"2025"_s, {old}},
        {"nothing", u"2026-01-03"_s, u"2026-01-01"_s, {}},
        {"no date", u"\"'"_s, {}, {four, three, two, one}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        HistoryFilter filter;
        filter.from = row.from;
        filter.to = row.to;
        EXPECT_EQ(idsOf(page(filter)), row.ids);
        EXPECT_EQ(walked(filter, 1), row.ids);
    }
}

TEST_F(HistoryPagesTest, aRangeHoldsWhatCameBehindAClockThatWentBack)
{
    const qint64 early = leave(u"2026-10-25T01:00:00"_s);
    const qint64 before = leave(u"2026-10-25T02:50:00"_s);
    const qint64 behind = leave(u"2026-10-25T02:10:00"_s);
    const qint64 late = leave(u"2026-10-25T03:10:00"_s);
    const auto between = [this](const QString &from, const QString &to) {
        HistoryFilter filter;
        filter.from = from;
        filter.to = to;
        return idsOf(page(filter));
    };
    EXPECT_EQ(between(u"2026-10-25T02:30:00"_s, {}), Ids({late, before}));
    EXPECT_EQ(between(u"2026-10-25T02:00:00"_s, u"2026-10-25T02:30:00"_s), Ids({behind}));
    EXPECT_EQ(between({}, u"2026-10-25T02:30:00"_s), Ids({behind, early}));
}

TEST_F(HistoryPagesTest, manyRowsThatAreNotAskedForAreWalkedOver)
{
    const qint64 wanted = leave(u"2026-01-01"_s, 1, DeliveryState::None, u"777"_s, u"Ñandú"_s);
    QList<QueueRow> rows(2500, {noon(), u"600"_s, u"text"_s, 0});
    done(m_store->queue().add(rows));
    OtherConnection(file()).run(
        u"INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported) "
        "SELECT id, '', phone, text, 1, '2026-01-02', 1 FROM message"_s);
    OtherConnection(file()).run(u"DELETE FROM message"_s);
    EXPECT_EQ(found(u"NANDU"_s), Ids({wanted}));
    EXPECT_EQ(found(u"777"_s), Ids({wanted}));
    EXPECT_EQ(walked({}, 1000).size(), 2501);
}

TEST_F(HistoryPagesTest, whatOthersWroteIsFoundToTheLetter)
{
    const QStringList texts = {u"100% _ \"q\" 'a' * OR NEAR( ("_s,
                               u"a"_s + QChar(QChar::Null) + u'b',
                               u"שלום עולם"_s,
                               u"x\u200By"_s,
                               QString(5000, u'z'),
                               u"half"_s + QChar(0xD800),
                               u"<b>bold</b>"_s,
                               u"😀 end"_s};
    Ids ids;
    for (const QString &text : texts)
        ids.append(leave(u"2026-01-01"_s, 1, DeliveryState::None, u"600 11-22"_s, text));
    const qint64 waiting = wait(u"2025-01-01"_s, u"<i>7</i>"_s, u"Café"_s);
    const struct
    {
        const char *name;
        QString text;
        Ids ids;
    } rows[] = {
        {"percent", u"%"_s, {ids.at(0)}},
        {"underscore", u"_"_s, {ids.at(0)}},
        {"quote", u"\""_s, {ids.at(0)}},
        {"apostrophe", u"'a'"_s, {ids.at(0)}},
        {"star", u"*"_s, {ids.at(0)}},
        {"OR", u"* or ne"_s, {ids.at(0)}},
        {"NEAR", u"NEAR("_s, {ids.at(0)}},
        {"bracket", u")"_s, {}},
        {"backslash", u"\\"_s, {}},
        {"right to left", u"עולם"_s, {ids.at(2)}},
        {"zero width", u"x\u200By"_s, {ids.at(3)}},
        {"long", QString(200, u'z'), {ids.at(4)}},
        {"before half a character", u"half"_s, {ids.at(5)}},
        {"HTML", u"<B>"_s, {ids.at(6)}},
        {"beyond the first plane", u"😀"_s, {ids.at(7)}},
        {"HTML in a phone that waits", u"<i>7"_s, {waiting}},
        {"accent of a message that waits", u"CAFE"_s, {waiting}},
        {"nowhere", u"nowhere"_s, {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(found(row.text), row.ids);
    }
    EXPECT_EQ(found(u"60011"_s).size(), 8);
    EXPECT_EQ(found(u"600 11"_s).size(), 8);
    EXPECT_EQ(found({}).size(), 9);
    EXPECT_EQ(found(u"\u0301"_s).size(), 9) << "a mark alone";
}

TEST_F(HistoryPagesTest, rowsAreGivenAgainByTheirIds)
{
    const qint64 gone = leave(u"2026-01-01"_s);
    const qint64 waiting = wait(u"2026-01-02"_s);
    const QueryLimit limit(TimeSource::system());
    const HistoryPages pages(m_store->database(), limit);
    const auto rows = given(pages.of({waiting, 12345, gone, 0, -7}));
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.at(0).id, waiting);
    EXPECT_EQ(rows.at(0).state, MessageState::Waiting);
    EXPECT_EQ(rows.at(1).id, gone);
    EXPECT_EQ(rows.at(1).state, MessageState::Sent);
    EXPECT_TRUE(given(pages.of({})).isEmpty());
}

TEST_F(HistoryPagesTest, messagesThatNeverHadAnIdAreToldApart)
{
    const qint64 gone = leave(u"2026-01-01"_s);
    const qint64 one = leaveWithoutId(u"2026-01-02"_s);
    const qint64 two = leaveWithoutId(u"2026-01-03"_s);
    EXPECT_LT(one, 0);
    EXPECT_EQ(idsOf(page()), Ids({two, one, gone}));
    EXPECT_EQ(found(u"TEXT"_s), Ids({two, one, gone}));
    const QueryLimit limit(TimeSource::system());
    const HistoryPages pages(m_store->database(), limit);
    const auto rows = given(pages.of({one}));
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.constFirst().id, one);
    EXPECT_EQ(rows.constFirst().at, u"2026-01-02"_s);
    const qint64 ofGone =
        -OtherConnection(file()).value(u"SELECT min(id) FROM outcome"_s).toLongLong();
    EXPECT_TRUE(given(pages.of({ofGone})).isEmpty()) << "that message has an id";
    EXPECT_TRUE(given(pages.of({std::numeric_limits<qint64>::min(), 0})).isEmpty());
}

TEST_F(HistoryPagesTest, whatIsFoundByItsTextIsTheWholeRow)
{
    leave(u"2026-01-01T10:00:00"_s, 1, DeliveryState::Delivered, u"601"_s, u"uno"_s,
          u"2026-01-01T10:00:05"_s);
    wait(u"2026-01-01T12:00:00"_s, u"602"_s, u"unos"_s);
    wait(u"2026-01-01T12:00:01"_s, u"603"_s, u"dos"_s);
    HistoryFilter filter;
    filter.text = u"UNO"_s;
    QList<HistoryRow> expected = page().rows;
    ASSERT_EQ(expected.size(), 3);
    expected.removeFirst();
    EXPECT_EQ(page(filter).rows, expected);
}

TEST_F(HistoryPagesTest, aPageEndsEarlyWhereTextsAreVeryLong)
{
    const QString much(HistoryPages::maxText / 2, u'x');
    Ids ids;
    for (const QString &at : {u"2026-01-01"_s, u"2026-01-02"_s, u"2026-01-03"_s}) {
        ids.prepend(leave(at, 1, DeliveryState::None, u"600"_s, much));
        ids.prepend(wait(at, u"600"_s, much));
    }
    HistoryFilter found;
    found.text = u"xxx"_s;
    HistoryFilter gone;
    gone.states = MessageState::Sent;
    for (const HistoryFilter &filter : {HistoryFilter(), found}) {
        EXPECT_EQ(page(filter).rows.size(), 2);
        EXPECT_EQ(walked(filter, 1000), ids);
        EXPECT_EQ(walked(filter, 1), ids);
    }
    EXPECT_EQ(page(gone).rows.size(), 2);
    EXPECT_EQ(walked(gone, 1000), Ids({ids.at(1), ids.at(3), ids.at(5)}));
}

TEST_F(HistoryPagesTest, theBeginningOfARangeIsFoundBehindManyRowsToo)
{
    QList<QueueRow> rows(6000, {noon(), u"600"_s, u"text"_s, 0});
    done(m_store->queue().add(rows));
    OtherConnection(file()).run(
        u"INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported) "
        "SELECT id, '', phone, text, 1, '2026-01-01', 1 FROM message"_s);
    OtherConnection(file()).run(u"DELETE FROM message"_s);
    const qint64 wanted = leave(u"2026-01-02"_s, -36);
    leave(u"2026-01-03"_s);
    HistoryFilter filter;
    filter.from = u"2026-01-02"_s;
    filter.to = u"2026-01-03"_s;
    EXPECT_EQ(walked(filter, 100), Ids({wanted}));
    filter.from = u"2026-01-01"_s;
    EXPECT_EQ(walked(filter, 1000).size(), 6001);
    filter.states = MessageState::Failed;
    EXPECT_EQ(walked(filter, 1), Ids({wanted}));
}

TEST_F(HistoryPagesTest, aQueryThatNobodyWantsEnds)
{
    leave(u"2026-01-01"_s);
    const std::atomic<bool> isCancelled = true;
    const QueryLimit limit(TimeSource::system(), &isCancelled);
    const auto ended = HistoryPages(m_store->database(), limit).page({}, {}, {}, 10);
    ASSERT_FALSE(ended);
    EXPECT_EQ(ended.error().kind(), StoreFailure::Kind::Busy);
    EXPECT_FALSE(m_store->database().isTogether());
    EXPECT_EQ(page().rows.size(), 1);
}

TEST_F(HistoryPagesTest, aMessageRemembersWhenItWasQueued)
{
    const qint64 id = add(noon());
    const QString queuedAt = stored(id, "queued_at").toString();
    EXPECT_EQ(queuedAt.size(), 19);
    done(m_store->queue().update({{noon(), u"601"_s, u"changed"_s, id}}, {}));
    done(m_store->queue().finish(id, 1, 7, noon(), true));
    EXPECT_EQ(OtherConnection(file()).value(u"SELECT queued_at FROM outcome"_s).toString(),
              queuedAt);
}

} // namespace

} // namespace norvane
