#include "TovekSMService/modem/codec/MessageText.h"

#include "TovekSMService/modem/codec/GsmAlphabet.h"

#include <QTextBoundaryFinder>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString times(int count, const QString &text)
{
    return text.repeated(count);
}

struct SplitRow
{
    const char *name;
    QString text;
    Alphabet alphabet;
    QList<int> sizes;
};

QList<SplitRow> splitRows()
{
    const QString a = u"a"_s;
    const QString euro = u"€"_s;
    const QString omega = u"ω"_s;
    const QString smile = u"\U0001F600"_s;
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s; // 8 units
    const auto gsm = Alphabet::Gsm7;
    const auto ucs = Alphabet::Ucs2;
    return {
        {"empty", QString(), gsm, {0}},
        {"160 septets", times(160, a), gsm, {160}},
        {"161 septets", times(161, a), gsm, {152, 9}},
        {"80 escape pairs", times(80, euro), gsm, {80}},
        {"81 escape pairs", times(81, euro), gsm, {76, 5}},
        {"an escape pair at the seam", times(151, a) + euro + times(8, a), gsm, {151, 9}},
        {"two full parts", times(304, a), gsm, {152, 152}},
        {"one more than two full parts", times(305, a), gsm, {152, 152, 1}},
        {"a line break at the seam", times(151, a) + u"\r\n"_s + times(10, a), gsm, {151, 12}},
        {"70 units", times(70, omega), ucs, {70}},
        {"71 units", times(71, omega), ucs, {66, 5}},
        {"one letter of another alphabet", times(70, a) + omega, ucs, {66, 5}},
        {"a surrogate pair at the seam", times(65, omega) + smile + times(5, omega), ucs, {65, 7}},
        {"a combining mark at the seam",
         times(66, omega) + u"\u0301"_s + times(5, omega),
         ucs,
         {65, 7}},
        {"a joined family at the seam", times(60, omega) + family + times(6, omega), ucs, {60, 14}},
        {"a character longer than a part", omega + times(70, u"\u0301"_s), ucs, {66, 5}},
        {"one longer than a part, behind another",
         u"x"_s + omega + times(70, u"\u0301"_s),
         ucs,
         {66, 6}},
        {"one that fills a part", times(5, omega) + omega + times(65, u"\u0301"_s), ucs, {5, 66}},
        {"one longer than a part, of surrogate pairs",
         u"x"_s + times(40, u"\U000E0100"_s),
         ucs,
         {65, 16}},
        {"one longer than a part, of two marks and surrogate pairs",
         u"x\u0301\u0301"_s + times(40, u"\U000E0100"_s),
         ucs,
         {65, 18}},
    };
}

TEST(MessageText, isCutWhereNothingIsTornApart)
{
    for (const SplitRow &row : splitRows()) {
        const auto message = prepareText(row.text);
        ASSERT_TRUE(message.has_value()) << row.name;
        EXPECT_EQ(message->alphabet, row.alphabet) << row.name;
        QList<int> sizes;
        for (const QString &part : message->parts)
            sizes.append(static_cast<int>(part.size()));
        EXPECT_EQ(sizes, row.sizes) << row.name;
        EXPECT_EQ(message->parts.join(QString()), row.text) << row.name;
    }
}

TEST(MessageText, keepsALineBreakAsTheTwoCharactersItIs)
{
    const auto message = prepareText(u"one\r\ntwo"_s);
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(message->alphabet, Alphabet::Gsm7);
    EXPECT_EQ(message->parts, QStringList{u"one\r\ntwo"_s});
}

TEST(MessageText, replacesASurrogateWithoutItsPartner)
{
    const char16_t high = 0xD83D;
    const char16_t low = 0xDE00;
    const QString replaced = u"\uFFFD"_s;
    const QString both = QString(QChar(high)) + QChar(low);
    const struct
    {
        QString text;
        QString expected;
    } rows[] = {
        {QString(QChar(high)), replaced},
        {QString(QChar(low)), replaced},
        {QString(QChar(low)) + QChar(high), replaced + replaced},
        {QString(QChar(high)) + both, replaced + both},
        {u"a"_s + QChar(high) + u"b"_s, u"a"_s + replaced + u"b"_s},
        {both, both},
    };
    for (const auto &row : rows) {
        const auto message = prepareText(row.text);
        ASSERT_TRUE(message.has_value());
        EXPECT_EQ(message->alphabet, Alphabet::Ucs2);
        EXPECT_EQ(message->parts, QStringList{row.expected});
    }
}

TEST(MessageText, takesUpTo255Parts)
{
    const QString a = u"a"_s;
    const QString omega = u"ω"_s;
    EXPECT_EQ(prepareText(a.repeated(255 * 152))->parts.size(), 255);
    EXPECT_FALSE(prepareText(a.repeated(255 * 152 + 1)).has_value());
    EXPECT_EQ(prepareText(u"€"_s.repeated(255 * 76))->parts.size(), 255);
    EXPECT_FALSE(prepareText(u"€"_s.repeated(255 * 76 + 1)).has_value());
    EXPECT_EQ(prepareText(omega.repeated(255 * 66))->parts.size(), 255);
    EXPECT_FALSE(prepareText(omega.repeated(255 * 66 + 1)).has_value());
    EXPECT_FALSE(prepareText(a.repeated(10'000'000)).has_value());
}

} // namespace

} // namespace norvane
