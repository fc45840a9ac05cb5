#include "foundation/Normalisation.h"

#include "common/CodePages.h"

#include <QList>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct Accents
{
    QString accented;
    QString plain;
};

const QList<Accents> table{
    {u"ÀÁÂÃÄ"_s, u"A"_s}, {u"âãäàá"_s, u"a"_s}, {u"ÈÉÊË"_s, u"E"_s},  {u"êëèé"_s, u"e"_s},
    {u"ÌÍÎÏ"_s, u"I"_s},  {u"îïìí"_s, u"i"_s},  {u"ÒÓÔÕÖ"_s, u"O"_s}, {u"ôõöòó"_s, u"o"_s},
    {u"ÙÚÛÜ"_s, u"U"_s},  {u"ûüùú"_s, u"u"_s},  {u"Ý"_s, u"Y"_s},     {u"ý"_s, u"y"_s},
    {u"ñ"_s, u"n"_s},     {u"Ñ"_s, u"N"_s},     {u"Ç"_s, u"C"_s},     {u"ç"_s, u"c"_s},
};

TEST(RemoveAccentsTest, fiftyLettersLoseTheirAccents)
{
    int letters = 0;
    for (const Accents &entry : table) {
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
    for (const Accents &entry : table)
        accented += entry.accented;
    for (char32_t code = 0; code < 0x10000; ++code) {
        const QString text{QChar(static_cast<char16_t>(code))};
        if (accented.contains(text))
            continue;
        ASSERT_EQ(RemoveAccents(text), text) << static_cast<quint32>(code);
    }
    const QString outside = u"ÅåÆæØøÿß ºª¿¡€ 😀 A\u0300\r\n\t  \x01"_s;
    EXPECT_EQ(RemoveAccents(outside), outside);
}

TEST(RemoveAccentsTest, argumentIsNotChanged)
{
    const QString text = u"Coração"_s;
    EXPECT_EQ(RemoveAccents(text), u"Coracao"_s);
    EXPECT_EQ(text, u"Coração"_s);
}

TEST(NormalizeTest, emptyTextStaysEmpty)
{
    EXPECT_EQ(NormalizeSMSText(false, QString()), QString());
    EXPECT_EQ(NormalizeSMSText(true, QString()), QString());
}

TEST(NormalizeTest, lettersOfTheTableComeOutPlain)
{
    EXPECT_EQ(NormalizeSMSText(false, u"Coração à João"_s), u"Coracao a Joao"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"ÑANDÚ"_s), u"NANDU"_s);
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
    EXPECT_EQ(NormalizeSMSText(false, u"º"_s), u"§"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"€"_s), u"?"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"ß"_s), u"á"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"Æ"_s), u"’"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"¿¡ª"_s), u"¨\u00AD¦"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"Ā😀"_s), u"???"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"•"_s), u"\a"_s);
    EXPECT_EQ(NormalizeSMSText(false, u"“x”"_s), u"\"x\""_s);
    EXPECT_EQ(NormalizeSMSText(false, u"Preço 10 € [ok]"_s), u"Preco 10 ? [ok]"_s);
}

TEST(NormalizeTest, keptAccentsGoThroughTheCodePagesToo)
{
    EXPECT_EQ(NormalizeSMSText(true, u"é"_s), u"‚"_s);    // 0xE9 to 0x82
    EXPECT_EQ(NormalizeSMSText(true, u"Ç"_s), u"€"_s);    // 0xC7 to 0x80
    EXPECT_EQ(NormalizeSMSText(true, u"à"_s), u"…"_s);    // 0xE0 to 0x85
    EXPECT_EQ(NormalizeSMSText(true, u"ü"_s), u"\x81"_s); // 0xFC to 0x81, undefined
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
    for (const QChar sign : u"aßÆ€ñº\nĀ"_s)
        EXPECT_EQ(NormalizeSMSText(false, QString(160, sign)).size(), 160);
}

TEST(NormalizeTest, lineBreakIsTheTwoCharactersItIs)
{
    EXPECT_EQ(NormalizeSMSText(false, u"á\r\né\t  x"_s), u"a\r\ne\t  x"_s);
}

TEST(NormalizeTest, secondPassMovesACharacterAgain)
{
    const QString once = NormalizeSMSText(false, u"1º"_s);
    const QString twice = NormalizeSMSText(false, once);
    EXPECT_EQ(once, u"1§"_s);
    EXPECT_EQ(twice, u"1õ"_s);
    // A third one would take the accent from what the second one made.
    EXPECT_EQ(NormalizeSMSText(false, twice), u"1o"_s);
}

} // namespace

} // namespace norvane
