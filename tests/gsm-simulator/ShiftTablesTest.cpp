#include "gsm-simulator/GsmAlphabet.h"

#include <gtest/gtest.h>

#include <map>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

using Extensions = std::map<int, char16_t>;

const Extensions commonExtensions{{0x0A, 0x0C}, {0x14, 0x5E},  {0x28, 0x7B}, {0x29, 0x7D},
                                  {0x2F, 0x5C}, {0x3C, 0x5B},  {0x3D, 0x7E}, {0x3E, 0x5D},
                                  {0x40, 0x7C}, {0x65, 0x20AC}};

// By code point, from 3GPP TS 23.038, A.2.2 and A.2.3.
const Extensions spanishExtensions{{0x09, 0xE7}, {0x41, 0xC1}, {0x49, 0xCD},
                                   {0x4F, 0xD3}, {0x55, 0xDA}, {0x61, 0xE1},
                                   {0x69, 0xED}, {0x6F, 0xF3}, {0x75, 0xFA}};
const Extensions portugueseExtensions{
    {0x05, 0xEA},  {0x09, 0xE7},  {0x0B, 0xD4},  {0x0C, 0xF4},  {0x0E, 0xC1},  {0x0F, 0xE1},
    {0x12, 0x3A6}, {0x13, 0x393}, {0x15, 0x3A9}, {0x16, 0x3A0}, {0x17, 0x3A8}, {0x18, 0x3A3},
    {0x19, 0x398}, {0x1F, 0xCA},  {0x41, 0xC0},  {0x49, 0xCD},  {0x4F, 0xD3},  {0x55, 0xDA},
    {0x5B, 0xC3},  {0x5C, 0xD5},  {0x61, 0xC2},  {0x69, 0xED},  {0x6F, 0xF3},  {0x75, 0xFA},
    {0x7B, 0xE3},  {0x7C, 0xF5},  {0x7F, 0xE2}};

QString textOf(const QByteArray &septets, Language single, Language locking)
{
    return textOfSeptets(septets, {single, locking});
}

void expectExtensions(Language language, const Extensions &own)
{
    for (char septet = 0; septet >= 0 && septet < 0x7F; ++septet) {
        if (septet == 0x1B)
            continue;
        QString expected = textOfSeptets(QByteArray(1, septet));
        if (own.contains(septet))
            expected = QChar(own.at(septet));
        else if (commonExtensions.contains(septet))
            expected = QChar(commonExtensions.at(septet));
        EXPECT_EQ(textOf(QByteArray("\x1B") + septet, language, Language::None), expected)
            << int(septet);
    }
}

} // namespace

TEST(ShiftTables, anEscapeLeadsToTheTableOfTheLanguage)
{
    expectExtensions(Language::None, {});
    expectExtensions(Language::Spanish, spanishExtensions);
    expectExtensions(Language::Portuguese, portugueseExtensions);
    EXPECT_EQ(textOf("\x1B\x7F", Language::Portuguese, Language::None), u"â"_s);
}

// By code point, from 3GPP TS 23.038, A.3.3.
TEST(ShiftTables, portugueseHasAMainTableOfItsOwn)
{
    static constexpr char16_t expected[128] = {
        0x40, 0xA3, 0x24, 0xA5,  0xEA, 0xE9, 0xFA, 0xED, 0xF3,   0xE7, 0x0A, 0xD4,   0xF4,
        0x0D, 0xC1, 0xE1, 0x394, 0x5F, 0xAA, 0xC7, 0xC0, 0x221E, 0x5E, 0x5C, 0x20AC, 0xD3,
        0x7C, 0,    0xC2, 0xE2,  0xCA, 0xC9, 0x20, 0x21, 0x22,   0x23, 0xBA, 0x25,   0x26,
        0x27, 0x28, 0x29, 0x2A,  0x2B, 0x2C, 0x2D, 0x2E, 0x2F,   0x30, 0x31, 0x32,   0x33,
        0x34, 0x35, 0x36, 0x37,  0x38, 0x39, 0x3A, 0x3B, 0x3C,   0x3D, 0x3E, 0x3F,   0xCD,
        0x41, 0x42, 0x43, 0x44,  0x45, 0x46, 0x47, 0x48, 0x49,   0x4A, 0x4B, 0x4C,   0x4D,
        0x4E, 0x4F, 0x50, 0x51,  0x52, 0x53, 0x54, 0x55, 0x56,   0x57, 0x58, 0x59,   0x5A,
        0xC3, 0xD5, 0xDA, 0xDC,  0xA7, 0x7E, 0x61, 0x62, 0x63,   0x64, 0x65, 0x66,   0x67,
        0x68, 0x69, 0x6A, 0x6B,  0x6C, 0x6D, 0x6E, 0x6F, 0x70,   0x71, 0x72, 0x73,   0x74,
        0x75, 0x76, 0x77, 0x78,  0x79, 0x7A, 0xE3, 0xF5, 0x60,   0xFC, 0xE0};
    for (int septet = 0; septet < 128; ++septet) {
        if (septet == 0x1B)
            continue;
        const QByteArray bytes(1, static_cast<char>(septet));
        EXPECT_EQ(textOf(bytes, Language::None, Language::Portuguese),
                  QString(QChar(expected[septet])))
            << septet;
        EXPECT_EQ(textOf(bytes, Language::None, Language::Spanish), textOfSeptets(bytes));
    }
}

TEST(ShiftTables, anEscapeWithoutAMeaningShowsTheMainTable)
{
    EXPECT_EQ(textOf("\x1B\x24", Language::Spanish, Language::Portuguese), u"º"_s);
    EXPECT_EQ(textOf("\x1B\x24", Language::Portuguese, Language::None), u"¤"_s);
    EXPECT_EQ(textOf("\x1B\x1B\x1B", Language::Portuguese, Language::Portuguese), u"  "_s);
}

TEST(ShiftTables, whatATextTakesFollowsItsAlphabet)
{
    EXPECT_EQ(septetsOfText(u"á"_s), std::nullopt);
    EXPECT_EQ(septetsOfText(u"á"_s, {Language::Spanish, Language::None}), "\x1B\x61");
    EXPECT_EQ(septetsOfText(u"á"_s, {Language::Portuguese, Language::None}), "\x1B\x0F");
    EXPECT_EQ(septetsOfText(u"á"_s, {Language::None, Language::Portuguese}), "\x0F");
    EXPECT_EQ(septetsOfText(u"€"_s, {Language::None, Language::Portuguese}), "\x18");
    EXPECT_EQ(septetsOfText(u"ñ"_s, {Language::Portuguese, Language::Portuguese}), std::nullopt);
}

TEST(ShiftTables, everyCharacterThatHasSeptetsIsReadAgainFromThem)
{
    for (const Language single : {Language::None, Language::Spanish, Language::Portuguese}) {
        for (const Language locking : {Language::None, Language::Spanish, Language::Portuguese}) {
            const Alphabet alphabet{single, locking};
            int found = 0;
            for (int unit = 0; unit <= 0xFFFF; ++unit) {
                const QString text = QChar(static_cast<char16_t>(unit));
                const auto septets = septetsOfText(text, alphabet);
                if (!septets)
                    continue;
                ++found;
                ASSERT_EQ(textOfSeptets(*septets, alphabet), text) << unit;
            }
            EXPECT_GE(found, 127 + 5);
        }
    }
}

TEST(ShiftTables, packingAndUnpackingAgreeBehindAnyFill)
{
    for (int fill = 0; fill < 7; ++fill) {
        for (int length = 0; length <= 160; ++length) {
            QByteArray septets(length, '\0');
            for (int i = 0; i < length; ++i)
                septets[i] = static_cast<char>((i * 37 + length) & 0x7F);
            const QByteArray packed = packSeptets(septets, fill);
            ASSERT_EQ(packed.size(), (length * 7 + fill + 7) / 8);
            ASSERT_EQ(unpackSeptets(packed, fill, length), septets);
        }
    }
}

} // namespace simulator

} // namespace norvane
