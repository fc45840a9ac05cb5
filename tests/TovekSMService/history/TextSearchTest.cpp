#include "TovekSMService/history/TextSearch.h"

#include "TovekSMService/history/IndexedSearch.h"
#include "TovekSMService/history/SearchedText.h"
#include "TovekSMService/history/TextIndexFixture.h"

#include <QRandomGenerator>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int many = 6000; ///< rows, more than are looked at one by one

class TextSearchTest : public TextIndexFixture
{
protected:
    /// The outcomes that the index gives for a text, and that have it; nothing where the index
    /// leaves that to a look at the rows.
    std::optional<Ids> indexed(const QString &needle)
    {
        const QueryLimit limit(TimeSource::system());
        const IndexedSearch search(m_store->database(), HistoryTable::Outcomes,
                                   {QString(), QString(), QString(), 0xff}, limit);
        const SearchedText text(needle);
        const std::optional<QString> question = given(search.questionOf(text));
        if (!question)
            return std::nullopt;
        Ids ids;
        m_given = 0;
        done(search.walk(*question, {}, [&](const StoreRow &row) {
            ++m_given;
            if (text.isIn(row.value(1).toString(), row.value(2).toString()))
                ids.append(row.value(0).toLongLong());
            return true;
        }));
        return ids;
    }

    /// The messages of these outcomes, as found() gives them.
    Ids messagesOf(const Ids &outcomes)
    {
        Ids messages;
        for (const qint64 id : outcomes)
            messages.append(OtherConnection(file())
                                .value(u"SELECT message_id FROM outcome WHERE id = %1"_s.arg(id))
                                .toLongLong());
        return messages;
    }

    int m_given = 0; ///< rows that the index gave for the last text
};

TEST_F(TextSearchTest, whatLiesDeepIsFoundByTheIndex)
{
    ASSERT_TRUE(m_index.isUsable());
    const qint64 wanted = leave(u"2025-01-01"_s, 1, DeliveryState::None, u"666 77-88"_s,
                                u"Ñandú \"100%\" _x_ * OR NEAR( 😀fin"_s);
    const qint64 other = leave(u"2025-01-01"_s, -36, DeliveryState::None, u"999"_s, u"abc"_s);
    addMany(6000, u"nothing of it"_s);
    index();
    EXPECT_GT(mark(), 6000);
    const struct
    {
        const char *text;
        Ids ids;
    } rows[] = {
        {"NANDU", {wanted}}, {"6667788", {wanted}}, {"666 77", {wanted}}, {"\"100%\"", {wanted}},
        {"_x_", {wanted}},   {"__x", {}},           {"%\" _", {wanted}},  {"* or near(", {wanted}},
        {"😀fin", {wanted}},  {"abc", {other}},      {"abd", {}},          {"100_", {}},
        {"'abc'", {}},       {"abc OR nan", {}},    {"6667788\nnan", {}}, {"\\abc", {}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(found(QString::fromUtf8(row.text)), row.ids) << row.text;
    HistoryFilter failures;
    failures.text = u"abc"_s;
    failures.states = MessageState::Sent;
    EXPECT_TRUE(page(failures).rows.isEmpty());
    EXPECT_EQ(found(QString(200, u'z')), Ids());
}

TEST_F(TextSearchTest, aWalkOverWhatTheIndexFindsShowsEachRowOnce)
{
    Ids wanted;
    for (int number = 0; number < 5; ++number)
        wanted.prepend(leave(u"2025-01-01"_s, 1, DeliveryState::None, u"600"_s, u"wanted"_s));
    addMany(6000, u"nothing of it"_s);
    index();
    const qint64 fresh = leave(u"2026-01-02"_s, 1, DeliveryState::None, u"600"_s, u"wanted"_s);
    wanted.prepend(fresh);
    for (const QString &text : {u"WANTED"_s, u"wa"_s, u"W"_s, u"d"_s}) {
        HistoryFilter filter;
        filter.text = text;
        Ids walked;
        HistoryCursor after;
        for (bool isLast = false; !isLast;) {
            const HistoryPage next = page(filter, after, {}, 2);
            walked += idsOf(next);
            isLast = !next.next;
            after = next.next.value_or(HistoryCursor());
        }
        EXPECT_EQ(walked, wanted) << text.toStdString();
    }
}

TEST_F(TextSearchTest, oneOrTwoCharactersAreFoundWhereverTheyStand)
{
    const qint64 longer = keep(u"Ñandú \"w'\\ 100% _x_ 😀🚀"_s, u"+34 666"_s);
    const qint64 one = keep(u"k"_s);
    const qint64 two = keep(u"yz"_s);
    const qint64 phone = keep(QString(), u"5"_s);
    const qint64 half = keep(u"half"_s + QChar(0xD800));
    const qint64 odd = keep(u"c\u0001b\u0001\n\U0010FFFF"_s);
    addMany(many, u"8"_s, u"8"_s);
    index();
    const struct
    {
        const char *name;
        QString text;
        Ids ids;
    } rows[] = {
        {"in the middle", u"nd"_s, {longer}},
        {"capitals", u"ND"_s, {longer}},
        {"accents", u"ñÁ"_s, {longer}},
        {"one accent", u"Ú"_s, {longer}},
        {"at the end", u"🚀"_s, {longer}},
        {"two at the end", u"😀🚀"_s, {longer}},
        {"one before the end", u"😀"_s, {longer}},
        {"the whole of one", u"k"_s, {one}},
        {"the whole of two", u"yz"_s, {two}},
        {"the first of two", u"y"_s, {two}},
        {"the last of two", u"z"_s, {two}},
        {"a phone", u"5"_s, {phone}},
        {"in a phone as it is written", u"4 "_s, {longer}},
        {"in a phone as it is dialled", u"46"_s, {longer}},
        {"before half of a character", u"lf"_s, {half}},
        {"the character that parts pieces", u"\u0001b"_s, {odd}},
        {"that alone", u"\u0001"_s, {odd}},
        {"the last character of all", u"\U0010FFFF"_s, {odd}},
        {"with a space in its place", u"c "_s, {}},
        {"quote", u"\"w"_s, {longer}},
        {"quotes", u"\"\""_s, {}},
        {"apostrophe", u"'"_s, {longer}},
        {"apostrophe and backslash", u"'\\"_s, {longer}},
        {"backslash", u"\\"_s, {longer}},
        {"percent", u"%"_s, {longer}},
        {"underscore", u"_x"_s, {longer}},
        {"star", u"*"_s, {}},
        {"colon", u":*"_s, {}},
        {"nowhere", u"qq"_s, {}},
        {"one, nowhere", u"q"_s, {}},
        {"emoji, nowhere", u"🎈"_s, {}},
        {"the other way round", u"dn"_s, {}},
        {"across phone and text", u"6ñ"_s, {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(found(row.text), row.ids);
        const std::optional<Ids> outcomes = indexed(row.text);
        ASSERT_TRUE(outcomes);
        EXPECT_EQ(messagesOf(*outcomes), row.ids) << "by the index alone";
        EXPECT_LT(m_given, 10) << "and the index knows of nothing else";
    }
}

TEST_F(TextSearchTest, deepRowsAreLookedForInTheIndexAlone)
{
    keep(u"deep"_s);
    receive(u"deep"_s);
    addMany(many, u"8"_s, u"8"_s);
    receiveMany(many, u"8"_s, u"8"_s);
    // An index that holds nothing, and is said to hold everything.
    for (const HistoryTable table : {HistoryTable::Outcomes, HistoryTable::Received})
        done(IndexMark(m_store->database(), table).set(1'000'000));
    for (const QString &text : {u"d"_s, u"de"_s, u"dee"_s, u"deep"_s}) {
        EXPECT_EQ(found(text), Ids()) << text.toStdString();
        EXPECT_EQ(inbox(text), Ids()) << text.toStdString();
    }
    EXPECT_EQ(found(u"88"_s), Ids());
    EXPECT_EQ(found(u"8"_s).size(), 1000);
    EXPECT_EQ(inbox(u"8"_s).size(), 1000);
}

TEST_F(TextSearchTest, whatIsIndexedAndWhatIsNotYetIsOneListTheNewestFirst)
{
    const qint64 deep = keep(u"wanted"_s);
    const qint64 deepReceived = receive(u"wanted"_s);
    addMany(many, u"8"_s, u"8"_s);
    receiveMany(many, u"8"_s, u"8"_s);
    index();
    const qint64 fresh = keep(u"WÁ"_s);
    const qint64 freshest = keep(u"wa"_s);
    const qint64 freshReceived = receive(u"wa"_s);
    for (const QString &text : {u"wa"_s, u"w"_s}) {
        EXPECT_EQ(found(text), Ids({freshest, fresh, deep})) << text.toStdString();
        EXPECT_EQ(inbox(text), Ids({freshReceived, deepReceived})) << text.toStdString();
    }
}

TEST_F(TextSearchTest, aPairThatAllHaveIsFoundAtOnceTheNewestFirst)
{
    addMany(many, u"a frequent text"_s);
    index();
    Ids newest;
    for (int row = many - 1; row >= many - 10; --row)
        newest.append(1000 + row);
    HistoryFilter filter;
    for (const QString &text : {u"fr"_s, u"f"_s, u"xt"_s}) {
        filter.text = text;
        EXPECT_EQ(idsOf(page(filter, {}, {}, 10)), newest) << text.toStdString();
        ASSERT_TRUE(indexed(text)) << text.toStdString();
        EXPECT_EQ(indexed(text)->size(), many) << text.toStdString();
    }
}

TEST_F(TextSearchTest, deepReceivedMessagesAreFoundAPageAtATime)
{
    Ids wanted;
    for (int number = 0; number < 5; ++number)
        wanted.prepend(receive(u"Wánted 🚀"_s));
    const qint64 read = receive(u"wanted"_s);
    done(m_store->received().markRead({read}));
    const qint64 pruned = receive(u"wanted"_s);
    receiveMany(many, u"8"_s, u"8"_s);
    index();
    done(m_store->received().markRead({pruned}));
    done(m_store->database().write("UPDATE received SET at = '2020-01-01' WHERE id = ?", {pruned}));
    ASSERT_EQ(given(m_store->received().prune(u"2021-01-01"_s, 10)), 1);
    for (const bool isIndexRidOfIt : {false, true}) {
        if (isIndexRidOfIt)
            index();
        for (const QString &text : {u"WANT"_s, u"wa"_s, u"w"_s}) {
            EXPECT_EQ(inbox(text), Ids({read}) + wanted) << text.toStdString();
            EXPECT_EQ(inbox(text, true), wanted) << text.toStdString();
        }
        EXPECT_EQ(inbox(u"🚀"_s), wanted);
        EXPECT_EQ(inbox(u"qq"_s), Ids());
    }
    const QueryLimit limit(TimeSource::system());
    const InboxPages pages(m_store->database(), limit);
    const InboxPage first = given(pages.page({{}, {}, u"wa"_s, true}, {}, {}, 2));
    ASSERT_TRUE(first.next);
    EXPECT_EQ(first.rows.size(), 2);
    EXPECT_EQ(first.rows.at(1).id, wanted.at(1));
    const InboxPage second = given(pages.page({{}, {}, u"wa"_s, true}, *first.next, {}, 3));
    ASSERT_EQ(second.rows.size(), 3);
    EXPECT_EQ(second.rows.at(0).id, wanted.at(2));
    EXPECT_FALSE(second.next);
}

TEST_F(TextSearchTest, aCharacterThatBeginsMorePiecesThanAreLookedUpIsFound)
{
    QString text;
    for (char16_t other = 0x4E00; other < 0x4E00 + 1100; ++other)
        text += u"ж"_s + QChar(other);
    const qint64 wanted = keep(text);
    addMany(many, u"8"_s, u"8"_s);
    index();
    EXPECT_EQ(found(u"ж"_s), Ids({wanted}));
    EXPECT_EQ(found(u"ж\u4E07"_s), Ids({wanted}));
    EXPECT_EQ(indexed(u"ж"_s).has_value(),
              m_store->database().kind() == StoreDatabase::Kind::Server);
}

TEST_F(TextSearchTest, aVeryLongTextIsFoundByItsEnd)
{
    const qint64 wanted = keep(QString(90'000, u'-') + u"fin"_s);
    const qint64 other = keep(QString(70'000, u'-') + u"fin"_s);
    addMany(many, u"8"_s, u"8"_s);
    index();
    for (const QString &text : {u"fin"_s, u"in"_s, u"n"_s, u"-fin"_s})
        EXPECT_EQ(found(text), Ids({other, wanted})) << text.toStdString();
    EXPECT_EQ(found(u"xyz"_s), Ids());
}

TEST_F(TextSearchTest, theIndexGivesWhatALookAtEveryRowGives)
{
    QRandomGenerator random(1);
    const QStringList characters = {u"a"_s, u"B"_s, u"é"_s, u"ñ"_s, u"😀"_s,  u"🚀"_s,      u" "_s,
                                    u"-"_s, u"'"_s, u"%"_s, u"1"_s, u"\n"_s, u"\u0001"_s, u"ﷺ"_s};
    const auto anyText = [&](int minLength, int maxLength) {
        QString text;
        for (int length = random.bounded(minLength, maxLength + 1); length > 0; --length)
            text += characters.at(random.bounded(static_cast<int>(characters.size())));
        return text;
    };
    struct Row
    {
        qint64 id;
        QString phone;
        QString text;
    };
    for (int row = 0; row < 150; ++row)
        keep(anyText(0, 6), anyText(1, 3));
    index(7);
    const QList<Row> all = given(m_store->database().rows(
        "SELECT id, phone, text FROM outcome ORDER BY id DESC", {}, [](const StoreRow &row) {
            return Row{row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toString()};
        }));
    ASSERT_EQ(all.size(), 150);
    ASSERT_EQ(mark(), all.constFirst().id);
    int finds = 0;
    for (int round = 0; round < 400; ++round) {
        const QString needle = anyText(1, round % 4 + 1);
        Ids expected;
        for (const Row &row : all) {
            if (SearchedText(needle).isIn(row.phone, row.text))
                expected.append(row.id);
        }
        const std::optional<Ids> ids = indexed(needle);
        ASSERT_TRUE(ids);
        EXPECT_EQ(*ids, expected) << needle.toStdString();
        finds += expected.isEmpty() ? 0 : 1;
    }
    EXPECT_GT(finds, 100);
}

} // namespace

} // namespace norvane
