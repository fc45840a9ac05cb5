#include "gsm-simulator/GsmAlphabet.h"

#include <QHash>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

// 3GPP TS 23.038, 6.2.1, written down by code point.
TEST(GsmAlphabet, everySeptetOfTheDefaultTableIsItsCharacter)
{
    static constexpr char16_t expected[128] = {
        0x40,   0xA3,   0x24,   0xA5, 0xE8,   0xE9, 0xF9,   0xEC,   0xF2,   0xC7,   0x0A,   0xD8,
        0xF8,   0x0D,   0xC5,   0xE5, 0x0394, 0x5F, 0x03A6, 0x0393, 0x039B, 0x03A9, 0x03A0, 0x03A8,
        0x03A3, 0x0398, 0x039E, 0,    0xC6,   0xE6, 0xDF,   0xC9,   0x20,   0x21,   0x22,   0x23,
        0xA4,   0x25,   0x26,   0x27, 0x28,   0x29, 0x2A,   0x2B,   0x2C,   0x2D,   0x2E,   0x2F,
        0x30,   0x31,   0x32,   0x33, 0x34,   0x35, 0x36,   0x37,   0x38,   0x39,   0x3A,   0x3B,
        0x3C,   0x3D,   0x3E,   0x3F, 0xA1,   0x41, 0x42,   0x43,   0x44,   0x45,   0x46,   0x47,
        0x48,   0x49,   0x4A,   0x4B, 0x4C,   0x4D, 0x4E,   0x4F,   0x50,   0x51,   0x52,   0x53,
        0x54,   0x55,   0x56,   0x57, 0x58,   0x59, 0x5A,   0xC4,   0xD6,   0xD1,   0xDC,   0xA7,
        0xBF,   0x61,   0x62,   0x63, 0x64,   0x65, 0x66,   0x67,   0x68,   0x69,   0x6A,   0x6B,
        0x6C,   0x6D,   0x6E,   0x6F, 0x70,   0x71, 0x72,   0x73,   0x74,   0x75,   0x76,   0x77,
        0x78,   0x79,   0x7A,   0xE4, 0xF6,   0xF1, 0xFC,   0xE0};
    for (int septet = 0; septet < 128; ++septet) {
        if (septet == 0x1B)
            continue;
        const QString text = textOfSeptets(QByteArray(1, static_cast<char>(septet)));
        EXPECT_EQ(text, QString(QChar(expected[septet]))) << septet;
        EXPECT_EQ(septetsNeeded(text), 1) << septet;
    }
}

TEST(GsmAlphabet, escapedSeptetsAreTheExtensionTableElseTheDefaultTable)
{
    const QHash<int, char16_t> extension{{0x0A, 0x0C}, {0x14, 0x5E},  {0x28, 0x7B}, {0x29, 0x7D},
                                         {0x2F, 0x5C}, {0x3C, 0x5B},  {0x3D, 0x7E}, {0x3E, 0x5D},
                                         {0x40, 0x7C}, {0x65, 0x20AC}};
    for (int septet = 0; septet < 128; ++septet) {
        const char bytes[] = {0x1B, static_cast<char>(septet)};
        const QString text = textOfSeptets(QByteArray(bytes, 2));
        if (extension.contains(septet)) {
            EXPECT_EQ(text, QString(QChar(extension.value(septet)))) << septet;
            EXPECT_EQ(septetsNeeded(text), 2) << septet;
        } else if (septet == 0x1B) {
            EXPECT_EQ(text, u" "_s);
        } else {
            EXPECT_EQ(text, textOfSeptets(QByteArray(1, static_cast<char>(septet)))) << septet;
        }
    }
}

TEST(GsmAlphabet, anEscapeAtTheEndIsASpace)
{
    EXPECT_EQ(textOfSeptets("a\x1B"), u"a "_s);
}

TEST(GsmAlphabet, charactersOutsideTheTablesHaveNoLength)
{
    EXPECT_EQ(septetsNeeded(u"abc€"_s), 5);
    EXPECT_EQ(septetsNeeded(QString()), 0);
    for (const char16_t character : {u'ç', u'á', u'`', u'\t', u'\u00A0', u'Ж'})
        EXPECT_EQ(septetsNeeded(QString(QChar(character))), std::nullopt) << int(character);
}

TEST(GsmAlphabet, unpacksPublishedExamples)
{
    struct Row
    {
        const char *packed;
        int count;
        const char *text;
    };
    static constexpr Row rows[] = {{"E8329BFD4697D9EC37", 10, "hellohello"},
                                   {"C8329BFD065DDF723619", 11, "Hello World"},
                                   {"31D98C56B3DD70", 8, "12345678"},
                                   {"31D98C56B3DD00", 7, "1234567"},
                                   {"41", 1, "A"},
                                   {"", 0, ""}};
    for (const Row &row : rows) {
        const QByteArray septets = unpackSeptets(QByteArray::fromHex(row.packed), 0, row.count);
        EXPECT_EQ(textOfSeptets(septets), QString::fromLatin1(row.text)) << row.packed;
    }
}

TEST(GsmAlphabet, leavesFillBitsOut)
{
    // The septets of "AB" behind 0 to 6 bits that belong to something else.
    for (unsigned fill = 0; fill < 7; ++fill) {
        const unsigned bits = (0x41U | (0x42U << 7U)) << fill | ((1U << fill) - 1U);
        QByteArray packed;
        for (unsigned octet = 0; octet < 3; ++octet)
            packed += static_cast<char>((bits >> (8 * octet)) & 0xFFU);
        EXPECT_EQ(unpackSeptets(packed, static_cast<int>(fill), 2), "AB") << fill;
    }
}

} // namespace simulator

} // namespace norvane
