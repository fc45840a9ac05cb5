#include "TovekSMService/history/InboxPages.h"

#include "TovekSMService/history/HistoryFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Ids = QList<qint64>;

class InboxPagesTest : public HistoryFixture
{
protected:
    qint64 receive(const QString &at, const QString &phone = u"600"_s,
                   const QString &text = u"text"_s)
    {
        return given(m_store->received().addMessage({0, at, {}, phone, text, false}, {}));
    }

    InboxPage inbox(const InboxFilter &filter = {}, const InboxCursor &after = {},
                    const std::optional<InboxCursor> &until = {}, int maxRows = 1000)
    {
        const QueryLimit limit(TimeSource::system());
        return given(InboxPages(m_store->database(), limit).page(filter, after, until, maxRows));
    }

    static Ids idsOf(const InboxPage &page)
    {
        Ids ids;
        for (const ReceivedMessage &message : page.rows)
            ids.append(message.id);
        return ids;
    }
};

TEST_F(InboxPagesTest, theLatestComeFirstAPageAtATime)
{
    Ids ids;
    for (int number = 0; number < 5; ++number)
        ids.prepend(receive(u"2026-01-0%1"_s.arg(number + 1)));
    EXPECT_EQ(idsOf(inbox()), ids);
    EXPECT_FALSE(inbox().next);
    const InboxPage first = inbox({}, {}, {}, 2);
    EXPECT_EQ(idsOf(first), ids.first(2));
    ASSERT_TRUE(first.next);
    const qint64 fresh = receive(u"2026-02-01"_s);
    const InboxPage second = inbox({}, *first.next, {}, 3);
    EXPECT_EQ(idsOf(second), ids.last(3));
    EXPECT_FALSE(second.next);
    EXPECT_EQ(idsOf(inbox({}, {}, first.next)), Ids({fresh}) + ids.first(2));
}

TEST_F(InboxPagesTest, messagesAreFoundByTextMomentAndWhetherTheyWereRead)
{
    const qint64 one = receive(u"2026-01-01T10:00:00"_s, u"+34 600"_s, u"BAJA"_s);
    const qint64 two = receive(u"2026-01-02T10:00:00"_s, u"INFO"_s, u"Mañana 100%"_s);
    const qint64 three = receive(u"2026-01-03T10:00:00"_s);
    done(m_store->received().markRead({two}));
    const struct
    {
        const char *name;
        InboxFilter filter;
        Ids ids;
    } rows[] = {
        {"everything", {}, {three, two, one}},
        {"unread", {{}, {}, {}, true}, {three, one}},
        {"accents", {{}, {}, u"manana"_s, false}, {two}},
        {"wildcard", {{}, {}, u"%"_s, false}, {two}},
        {"phone", {{}, {}, u"34600"_s, false}, {one}},
        {"unread of a text", {{}, {}, u"mañana"_s, true}, {}},
        {"a day", {u"2026-01-02"_s, u"2026-01-03"_s, {}, false}, {two}},
        {"before", {{}, u"2026-01-02"_s, {}, false}, {one}},
        {"behind", {u"2026-01-03"_s, {}, {}, false}, {three}},
        {"nothing", {u"2027"_s, {}, {}, false}, {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(idsOf(inbox(row.filter)), row.ids);
    }
    EXPECT_TRUE(inbox({{}, {}, u"info"_s, false}).rows.constFirst().isRead);
}

} // namespace

} // namespace norvane
