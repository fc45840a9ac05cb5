#include "NorvaneSMS/queue/IntegerConversion.h"

#include "support/RaisedFailure.h"

#include <QList>
#include <QString>

#include <gtest/gtest.h>

namespace {

struct Converted
{
    QString text;
    qint16 number;
};

TEST(IntegerConversionTest, whatConverts)
{
    const QList<Converted> cases{
        {u"0"_qs, 0},
        {u"07"_qs, 7},
        {u"2009"_qs, 2009},
        {u"9999"_qs, 9999},
        {u"00000000000000012"_qs, 12},
        {u"32767"_qs, 32767},
        {u"-32768"_qs, -32768},
        // blanks
        {u" 7"_qs, 7},
        {u"7 "_qs, 7},
        {u"\t 7\r\n"_qs, 7},
        {u"\v7\f"_qs, 7},
        // signs
        {u"+5"_qs, 5},
        {u"-5"_qs, -5},
        {u"5-"_qs, -5},
        {u"5+"_qs, 5},
        {u"- 5"_qs, -5},
        {u"5 -"_qs, -5},
        {u"(5)"_qs, -5},
        {u"( 5 )"_qs, -5},
        {u"-0"_qs, 0},
        // fractions: to the nearest, a half to the even number
        {u"1."_qs, 1},
        {u"1,"_qs, 1},
        {u".5"_qs, 0},
        {u",5"_qs, 0},
        {u"0.51"_qs, 1},
        {u"1.5"_qs, 2},
        {u"2,5"_qs, 2},
        {u"3.5"_qs, 4},
        {u"-.5"_qs, 0},
        {u"-1.5"_qs, -2},
        {u"-2.5"_qs, -2},
        {u"32767.4"_qs, 32767},
        {u"-32768.5"_qs, -32768},
        // exponents
        {u"1E3"_qs, 1000},
        {u"1e3"_qs, 1000},
        {u"2D2"_qs, 200},
        {u"2d+2"_qs, 200},
        {u"15E-1"_qs, 2},
        {u"1.5E1"_qs, 15},
        {u"1E-999"_qs, 0},
        // other bases
        {u"&HFF"_qs, 255},
        {u"&h1f"_qs, 31},
        {u"&HFFFF"_qs, -1},
        {u"&O17"_qs, 15},
        {u"&17"_qs, 15},
        {u" &H9 "_qs, 9},
    };
    for (const Converted &c : cases)
        EXPECT_EQ(toInteger16(c.text), c.number) << c.text.toStdString();
}

TEST(IntegerConversionTest, whatDoesNotConvert)
{
    for (const QString &text : {QString(),
                                u" "_qs,
                                u"    "_qs,
                                u"A"_qs,
                                u"3A"_qs,
                                u"A3"_qs,
                                u"1 2"_qs,
                                u"+"_qs,
                                u"-"_qs,
                                u"+-5"_qs,
                                u"--5"_qs,
                                u"-5-"_qs,
                                u"+5-"_qs,
                                u"."_qs,
                                u","_qs,
                                u"-."_qs,
                                u"1.2.3"_qs,
                                u"1,2.3"_qs,
                                u"E3"_qs,
                                u"1E"_qs,
                                u"1E+"_qs,
                                u"1E3.5"_qs,
                                u"1F3"_qs,
                                u"()"_qs,
                                u"("_qs,
                                u")"_qs,
                                u"(5"_qs,
                                u"5)"_qs,
                                u"(-5)"_qs,
                                u"((5))"_qs,
                                u"&"_qs,
                                u"&H"_qs,
                                u"&HG"_qs,
                                u"&O8"_qs,
                                u"&8"_qs,
                                u"-&H1"_qs,
                                u"&H-1"_qs,
                                u"1\u00A0"_qs,
                                u"\u000E1"_qs,
                                u"!1"_qs,
                                u"٣"_qs,
                                u"²"_qs,
                                u"5%"_qs,
                                u"€5"_qs,
                                u"1'0"_qs,
                                u"nan"_qs,
                                u"inf"_qs,
                                u"0x1"_qs,
                                u"True"_qs,
                                u"1"_qs + QChar(QChar::Null),
                                QString(QChar(QChar::Null)),
                                u"1:2"_qs,
                                u"1/2"_qs})
        EXPECT_EQ(raisedNumber([&] { toInteger16(text); }), 13) << text.toStdString();
}

TEST(IntegerConversionTest, whatSixteenBitsDoNotHold)
{
    for (const QString &text :
         {u"32768"_qs, u"-32769"_qs, u"32767.5"_qs, u"-32768.51"_qs, u"9E9"_qs, u"1E999"_qs,
          u"99999999999999999999"_qs, u"&H10000"_qs, u"&O200000"_qs, u"&HFFFFFFFFF"_qs})
        EXPECT_EQ(raisedNumber([&] { toInteger16(text); }), 6) << text.toStdString();
}

TEST(IntegerConversionTest, failuresTellWhereTheyComeFrom)
{
    for (const QString &text : {u"32768"_qs, u"x"_qs, u"&H"_qs})
        EXPECT_EQ(raisedFailure([&] { toInteger16(text); })->source(), u"toInteger16"_qs);
}

TEST(IntegerConversionTest, everyTextOfTwoBytesConvertsOrFails)
{
    int converted = 0;
    for (char16_t first = 0; first < 256; ++first) {
        for (char16_t second = 0; second < 256; ++second) {
            const char16_t units[] = {first, second};
            const QStringView text(units, 2);
            qint16 number = 0;
            const qint32 failure = raisedNumber([&] { number = toInteger16(text); });
            ASSERT_TRUE(failure == 0 || failure == 13) << text.toString().toStdString();
            ASSERT_TRUE(number >= -9 && number <= 99);
            converted += failure == 0 ? 1 : 0;
        }
    }
    // 100 of digits alone; each of ten digits with a blank (six kinds), a sign (two) or a separator
    // (two) before or behind it; and an octal one behind "&".
    EXPECT_EQ(converted, 100 + 10 * 2 * (6 + 2 + 2) + 8);
}

} // namespace
