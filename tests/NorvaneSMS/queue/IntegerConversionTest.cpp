#include "NorvaneSMS/queue/IntegerConversion.h"

#include "support/RaisedFailure.h"

#include <QList>
#include <QString>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct Converted
{
    QString text;
    qint16 number;
};

TEST(IntegerConversionTest, whatConverts)
{
    const QList<Converted> cases{
        {u"0"_s, 0},
        {u"07"_s, 7},
        {u"2009"_s, 2009},
        {u"9999"_s, 9999},
        {u"00000000000000012"_s, 12},
        {u"32767"_s, 32767},
        {u"-32768"_s, -32768},
        // blanks
        {u" 7"_s, 7},
        {u"7 "_s, 7},
        {u"\t 7\r\n"_s, 7},
        {u"\v7\f"_s, 7},
        // signs
        {u"+5"_s, 5},
        {u"-5"_s, -5},
        {u"5-"_s, -5},
        {u"5+"_s, 5},
        {u"- 5"_s, -5},
        {u"5 -"_s, -5},
        {u"(5)"_s, -5},
        {u"( 5 )"_s, -5},
        {u"-0"_s, 0},
        // fractions: to the nearest, a half to the even number
        {u"1."_s, 1},
        {u"1,"_s, 1},
        {u".5"_s, 0},
        {u",5"_s, 0},
        {u"0.51"_s, 1},
        {u"1.5"_s, 2},
        {u"2,5"_s, 2},
        {u"3.5"_s, 4},
        {u"-.5"_s, 0},
        {u"-1.5"_s, -2},
        {u"-2.5"_s, -2},
        {u"32767.4"_s, 32767},
        {u"-32768.5"_s, -32768},
        // exponents
        {u"1E3"_s, 1000},
        {u"1e3"_s, 1000},
        {u"2D2"_s, 200},
        {u"2d+2"_s, 200},
        {u"15E-1"_s, 2},
        {u"1.5E1"_s, 15},
        {u"1E-999"_s, 0},
        // other bases
        {u"&HFF"_s, 255},
        {u"&h1f"_s, 31},
        {u"&HFFFF"_s, -1},
        {u"&O17"_s, 15},
        {u"&17"_s, 15},
        {u" &H9 "_s, 9},
    };
    for (const Converted &c : cases)
        EXPECT_EQ(toInteger16(c.text), c.number) << c.text.toStdString();
}

TEST(IntegerConversionTest, whatDoesNotConvert)
{
    for (const QString &text : {QString(),
                                u" "_s,
                                u"    "_s,
                                u"A"_s,
                                u"3A"_s,
                                u"A3"_s,
                                u"1 2"_s,
                                u"+"_s,
                                u"-"_s,
                                u"+-5"_s,
                                u"--5"_s,
                                u"-5-"_s,
                                u"+5-"_s,
                                u"."_s,
                                u","_s,
                                u"-."_s,
                                u"1.2.3"_s,
                                u"1,2.3"_s,
                                u"E3"_s,
                                u"1E"_s,
                                u"1E+"_s,
                                u"1E3.5"_s,
                                u"1F3"_s,
                                u"()"_s,
                                u"("_s,
                                u")"_s,
                                u"(5"_s,
                                u"5)"_s,
                                u"(-5)"_s,
                                u"((5))"_s,
                                u"&"_s,
                                u"&H"_s,
                                u"&HG"_s,
                                u"&O8"_s,
                                u"&8"_s,
                                u"-&H1"_s,
                                u"&H-1"_s,
                                u"1\u00A0"_s,
                                u"\u000E1"_s,
                                u"!1"_s,
                                u"٣"_s,
                                u"²"_s,
                                u"5%"_s,
                                u"€5"_s,
                                u"1'0"_s,
                                u"nan"_s,
                                u"inf"_s,
                                u"0x1"_s,
                                u"True"_s,
                                u"1"_s + QChar(QChar::Null),
                                QString(QChar(QChar::Null)),
                                u"1:2"_s,
                                u"1/2"_s})
        EXPECT_EQ(raisedNumber([&] { toInteger16(text); }), 13) << text.toStdString();
}

TEST(IntegerConversionTest, whatSixteenBitsDoNotHold)
{
    for (const QString &text :
         {u"32768"_s, u"-32769"_s, u"32767.5"_s, u"-32768.51"_s, u"9E9"_s, u"1E999"_s,
          u"99999999999999999999"_s, u"&H10000"_s, u"&O200000"_s, u"&HFFFFFFFFF"_s})
        EXPECT_EQ(raisedNumber([&] { toInteger16(text); }), 6) << text.toStdString();
}

TEST(IntegerConversionTest, failuresTellWhereTheyComeFrom)
{
    for (const QString &text : {u"32768"_s, u"x"_s, u"&H"_s})
        EXPECT_EQ(raisedFailure([&] { toInteger16(text); })->source(), u"toInteger16"_s);
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

} // namespace norvane
