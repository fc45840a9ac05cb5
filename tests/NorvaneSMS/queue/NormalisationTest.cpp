#include "NorvaneSMS/queue/Normalisation.h"

#include "common/CodePages.h"

#include <QList>

#include <gtest/gtest.h>

namespace {

struct Accents
{
    QString accented;
    QString plain;
};

const QList<Accents> Table{
    {u"ÀÁÂÃÄ"_qs, u"A"_qs}, {u"âãäàá"_qs, u"a"_qs}, {u"ÈÉÊË"_qs, u"E"_qs},  {u"êëèé"_qs, u"e"_qs},
    {u"ÌÍÎÏ"_qs, u"I"_qs},  {u"îïìí"_qs, u"i"_qs},  {u"ÒÓÔÕÖ"_qs, u"O"_qs}, {u"ôõöòó"_qs, u"o"_qs},
    {u"ÙÚÛÜ"_qs, u"U"_qs},  {u"ûüùú"_qs, u"u"_qs},  {u"Ý"_qs, u"Y"_qs},     {u"ý"_qs, u"y"_qs},
    {u"ñ"_qs, u"n"_qs},     {u"Ñ"_qs, u"N"_qs},     {u"Ç"_qs, u"C"_qs},     {u"ç"_qs, u"c"_qs},
};

TEST(RemoveAccentsTest, fiftyLettersLoseTheirAccents)
{
    int letters = 0;
    for (const Accents &entry : Table) {
        for (const QChar letter : entry.accented) {
            ++letters;
            EXPECT_EQ(RemoveAccents(QString(letter)), entry.plain) << entry.plain.toStdString();
        }
    }
    EXPECT_EQ(letters, 50);
}

TEST(RemoveAccentsTest, everyOtherCharacterStays)
{
    QString accented;
    for (const Accents &entry : Table)
        accented += entry.accented;
    for (char32_t code = 0; code < 0x10000; ++code) {
        const QString text{QChar(static_cast<char16_t>(code))};
        if (accented.contains(text))
            continue;
        ASSERT_EQ(RemoveAccents(text), text) << static_cast<quint32>(code);
    }
    const QString outside = u"ÅåÆæØøÿß ºª¿¡€ 😀 A\u0300\r\n\t  \x01"_qs;
    EXPECT_EQ(RemoveAccents(outside), outside);
}

TEST(RemoveAccentsTest, argumentIsNotChanged)
{
    const QString text = u"Coração"_qs;
    EXPECT_EQ(RemoveAccents(text), u"Coracao"_qs);
    EXPECT_EQ(text, u"Coração"_qs);
}

TEST(NormalizeTest, emptyTextStaysEmpty)
{
    EXPECT_EQ(NormalizeSMSText(false, QString()), QString());
    EXPECT_EQ(NormalizeSMSText(true, QString()), QString());
}

TEST(NormalizeTest, lettersOfTheTableComeOutPlain)
{
    EXPECT_EQ(NormalizeSMSText(false, u"Coração à João"_qs), u"Coracao a Joao"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"ÑANDÚ"_qs), u"NANDU"_qs);
}

TEST(NormalizeTest, charactersBelow128Stay)
{
    QString text;
    for (char16_t code = 0; code < 128; ++code)
        text += QChar(code);
    EXPECT_EQ(NormalizeSMSText(false, text), text);
    EXPECT_EQ(NormalizeSMSText(true, text), text);
}

TEST(NormalizeTest, signsAbove127AreTheOemBytesReadAsAnsi)
{
    EXPECT_EQ(NormalizeSMSText(false, u"º"_qs), u"§"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"€"_qs), u"?"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"ß"_qs), u"á"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"Æ"_qs), u"’"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"¿¡ª"_qs), u"¨\u00AD¦"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"Ā😀"_qs), u"???"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"•"_qs), u"\a"_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"“x”"_qs), u"\"x\""_qs);
    EXPECT_EQ(NormalizeSMSText(false, u"Preço 10 € [ok]"_qs), u"Preco 10 ? [ok]"_qs);
}

TEST(NormalizeTest, keptAccentsGoThroughTheCodePagesToo)
{
    EXPECT_EQ(NormalizeSMSText(true, u"é"_qs), u"‚"_qs);    // 0xE9 to 0x82
    EXPECT_EQ(NormalizeSMSText(true, u"Ç"_qs), u"€"_qs);    // 0xC7 to 0x80
    EXPECT_EQ(NormalizeSMSText(true, u"à"_qs), u"…"_qs);    // 0xE0 to 0x85
    EXPECT_EQ(NormalizeSMSText(true, u"ü"_qs), u"\x81"_qs); // 0xFC to 0x81, undefined
}

TEST(NormalizeTest, everyByteTakesTheWayOfTheTables)
{
    for (int code = 0; code < 256; ++code) {
        const QByteArray byte(1, static_cast<char>(code));
        EXPECT_EQ(NormalizeSMSText(true, CodePages::fromAnsi(byte)),
                  CodePages::fromAnsi(CodePages::ansiToOem(byte)))
            << code;
    }
}

TEST(NormalizeTest, lengthStays)
{
    for (const QChar sign : u"aßÆ€ñº\nĀ"_qs)
        EXPECT_EQ(NormalizeSMSText(false, QString(160, sign)).size(), 160);
}

TEST(NormalizeTest, lineBreakIsTheTwoCharactersItIs)
{
    EXPECT_EQ(NormalizeSMSText(false, u"á\r\né\t  x"_qs), u"a\r\ne\t  x"_qs);
}

TEST(NormalizeTest, secondPassMovesACharacterAgain)
{
    const QString once = NormalizeSMSText(false, u"1º"_qs);
    const QString twice = NormalizeSMSText(false, once);
    EXPECT_EQ(once, u"1§"_qs);
    EXPECT_EQ(twice, u"1õ"_qs);
    // A third one would take the accent from what the second one made.
    EXPECT_EQ(NormalizeSMSText(false, twice), u"1o"_qs);
}

} // namespace
