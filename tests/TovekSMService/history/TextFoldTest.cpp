#include "TovekSMService/history/TextFold.h"

#include "TovekSMService/history/SearchedText.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(TextFoldTest, textsAreComparedWithoutCaseAndAccents)
{
    const struct
    {
        const char *name;
        QString text;
        QString folded;
    } rows[] = {
        {"empty", QString(), QString()},
        {"plain", u"Hola MUNDO 123"_s, u"hola mundo 123"_s},
        {"what LIKE and the index know is left", u"100%_\"'*"_s, u"100%_\"'*"_s},
        {"accents", u"ÁÉÍÓÚ áéíóú"_s, u"aeiou aeiou"_s},
        {"tilde", u"Mañana"_s, u"manana"_s},
        {"a mark of its own", u"man\u0303ana"_s, u"manana"_s},
        {"sharp s", u"Straße"_s, u"straße"_s},
        {"ligature", u"ﬁn"_s, u"fin"_s},
        {"wide digits", u"６００"_s, u"600"_s},
        {"dotted I", u"İstanbul"_s, u"istanbul"_s},
        {"Greek with its final sigma", u"ΣΊΣΥΦΟΣ"_s, u"σισυφοσ"_s},
        {"Cyrillic", u"Й"_s, u"и"_s},
        {"right to left", u"שָׁלוֹם"_s, u"שלום"_s},
        {"zero width stays", u"a\u200Bb"_s, u"a\u200Bb"_s},
        {"beyond the first plane", u"😀𝐀"_s, u"😀a"_s},
        {"NUL", u"a"_s + QChar(QChar::Null) + u'b', u"a\uFFFDb"_s},
        {"half a pair at the end", u"x"_s + QChar(0xD800), u"x\uFFFD"_s},
        {"half a pair before a letter", QChar(0xDC00) + u"x"_s, u"\uFFFDx"_s},
        {"marks alone", u"\u0301\u0302"_s, QString()},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(TextFold::fold(row.text), row.folded);
        EXPECT_EQ(TextFold::fold(row.folded), row.folded) << "folded twice";
    }
}

TEST(TextFoldTest, aNumberIsFoundAsItIsDialled)
{
    const struct
    {
        QString phone;
        QString dialled;
    } rows[] = {
        {u"600 11 22 33"_s, u"600112233"_s},
        {u"+34 (600) 11-22.33"_s, u"+34600112233"_s},
        {u"*100#"_s, u"*100#"_s},
        {u"600112233"_s, u"600112233"_s},
        {QString(), QString()},
        {u"\u00A0600\u2009112"_s, u"600112"_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(TextFold::dialled(row.phone), row.dialled);
}

TEST(SearchedTextTest, aTextIsLookedForInPhoneNumberAndMessageAndNotAcrossThem)
{
    const QString phone = u"600 11 22 33"_s;
    const QString text = u"<b>Año</b> 100% \"OR\" NEAR(x)"_s;
    const struct
    {
        QString searched;
        bool isIn;
    } rows[] = {
        {QString(), true},    {u"6001122"_s, true},  {u"600 11"_s, true},      {u"ano"_s, true},
        {u"AÑO</B>"_s, true}, {u"100%"_s, true},     {u"100_"_s, false},       {u"%"_s, true},
        {u"_"_s, false},      {u"\"or\""_s, true},   {u"near("_s, true},       {u"*"_s, false},
        {u"33<b>"_s, false},  {u"33\n<b>"_s, false}, {u"6001122334"_s, false},
    };
    for (const auto &row : rows)
        EXPECT_EQ(SearchedText(row.searched).isIn(phone, text), row.isIn)
            << row.searched.toStdString();
}

} // namespace

} // namespace norvane
