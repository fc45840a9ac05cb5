#include "TovekSMService/modem/codec/SubmitPdu.h"

#include "TovekSMService/modem/codec/SubmitDecoder.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QList<SubmitPart> partsOf(const EncodeRequest &request)
{
    const auto result = encodeSubmit(request);
    EXPECT_TRUE(result.has_value());
    return result.value_or(QList<SubmitPart>());
}

struct ExampleRow
{
    const char *phone;
    const char *text;
    std::optional<quint8> validityPeriod;
    const char *hex;
    int length;
};

// The first two are published examples (the second one with a length of 17 for its +CMGS); the
// others follow from 3GPP TS 23.040, 9.2.2.2 and 9.1.2.5, by hand.
const ExampleRow examples[] = {
    {"+46708251358", "hellohello", 0xAA, "0011000B916407281553F80000AA0AE8329BFD4697D9EC37", 23},
    {"1234567", "hello", 0xAA, "0011000781214365F70000AA05E8329BFD06", 17},
    {"1234567", "hello", std::nullopt, "0001000781214365F7000005E8329BFD06", 16},
    {"+34600111222", "", std::nullopt, "0001000B914306101122F2000000", 13},
};

TEST(SubmitPdu, matchesTheExamples)
{
    for (const ExampleRow &row : examples) {
        const QList<SubmitPart> parts = partsOf(
            {QString::fromLatin1(row.phone), QString::fromUtf8(row.text), 0, row.validityPeriod});
        ASSERT_EQ(parts.size(), 1) << row.phone;
        EXPECT_EQ(parts.first().hex.toStdString(), row.hex);
        EXPECT_EQ(parts.first().length, row.length);
        EXPECT_EQ(parts.first().number, 1);
        EXPECT_EQ(parts.first().total, 1);
    }
}

TEST(SubmitPdu, putsTheOtherDigitsOfAnAddressIntoSemiOctets)
{
    const QList<SubmitPart> parts = partsOf({u"50*#abc"_s, u"ω"_s, 0, {}});
    ASSERT_EQ(parts.size(), 1);
    // 5 0 | * # | a b | c and filling: 0x05 0xBA 0xDC 0xFE
    EXPECT_EQ(parts.first().hex.toStdString(), "000100078105BADCFE00080203C9");
    EXPECT_EQ(parts.first().length, 13);
}

TEST(SubmitPdu, refusesWhatCannotBeSent)
{
    const QString text = u"text"_s;
    const struct
    {
        const char *phone;
        EncodeError error;
        int code;
    } rows[] = {
        {"", EncodeError::EmptyPhone, -11},
        {"+", EncodeError::EmptyPhone, -11},
        {"123456789012345678901", EncodeError::NumberTooLong, -17},
        {"+123456789012345678901", EncodeError::NumberTooLong, -17},
        {"600 111 222", EncodeError::InvalidCharacters, -18},
        {"600-111", EncodeError::InvalidCharacters, -18},
        {"34+600", EncodeError::InvalidCharacters, -18},
        {"++34", EncodeError::InvalidCharacters, -18},
        {"600A", EncodeError::InvalidCharacters, -18},
        {"d", EncodeError::InvalidCharacters, -18},
        {"600\r\nAT", EncodeError::InvalidCharacters, -18},
        {"\xD9\xA1\xD9\xA2", EncodeError::InvalidCharacters, -18}, // digits of another script
        {" ", EncodeError::InvalidCharacters, -18},
    };
    for (const auto &row : rows) {
        const auto result = encodeSubmit({QString::fromUtf8(row.phone), text, 0, {}});
        ASSERT_FALSE(result.has_value()) << row.phone;
        EXPECT_EQ(result.error(), row.error) << row.phone;
        EXPECT_EQ(errorCode(row.error), row.code);
    }

    const QString nul = u"60"_s + QChar(u'\0');
    const auto withNul = encodeSubmit({nul, text, 0, {}});
    ASSERT_FALSE(withNul.has_value());
    EXPECT_EQ(withNul.error(), EncodeError::InvalidCharacters);
    const auto tooLong = encodeSubmit({u"600"_s, text.repeated(10'000), 0, {}});
    ASSERT_FALSE(tooLong.has_value());
    EXPECT_EQ(tooLong.error(), EncodeError::TextTooLong);
    EXPECT_EQ(errorCode(EncodeError::TextTooLong), -16);
}

TEST(SubmitPdu, takesTwentyDigits)
{
    for (const char *phone : {"12345678901234567890", "+12345678901234567890", "1", "+1"}) {
        const QList<SubmitPart> parts = partsOf({QString::fromLatin1(phone), u"x"_s, 0, {}});
        ASSERT_EQ(parts.size(), 1);
        EXPECT_EQ(decodeSubmit(parts.first().hex)->phone, QString::fromLatin1(phone));
    }
}

TEST(SubmitPdu, headsThePartsOfALongText)
{
    const QList<SubmitPart> parts = partsOf({u"600"_s, u"a"_s.repeated(161), 0xBEEF, {}});
    ASSERT_EQ(parts.size(), 2);
    // 0x41: SMS-SUBMIT with a header; 8 + 152 septets, then 8 + 9.
    EXPECT_TRUE(parts[0].hex.startsWith("0041000381"
                                        "06F0"
                                        "0000A0"
                                        "060804BEEF0201"));
    EXPECT_TRUE(parts[1].hex.startsWith("0041000381"
                                        "06F0"
                                        "000011"
                                        "060804BEEF0202"));
    EXPECT_EQ(parts[0].length, 9 + 140);
    EXPECT_EQ(parts[1].number, 2);
    EXPECT_EQ(parts[1].total, 2);

    const QList<SubmitPart> wide = partsOf({u"600"_s, u"ω"_s.repeated(71), 7, 0xFF});
    ASSERT_EQ(wide.size(), 2);
    EXPECT_TRUE(wide[0].hex.startsWith("0051000381"
                                       "06F0"
                                       "0008FF8B"
                                       "06080400070201"));
}

QString randomText(QRandomGenerator &random, int length)
{
    static const QString common = u"abc XYZ09@£€[]{}\\~^|\r\nñÑçÇáω中"_s;
    QString text;
    const int kind = random.bounded(4);
    for (int i = 0; i < length; ++i) {
        if (kind == 0)
            text += common.at(random.bounded(20));
        else if (kind == 1)
            text += common.at(random.bounded(static_cast<int>(common.size())));
        else if (kind == 2)
            text += QChar(static_cast<char16_t>(random.bounded(0x10000)));
        else
            text += QString::fromUcs4(
                std::array{static_cast<char32_t>(random.bounded(0x10000, 0x110000))}.data(), 1);
    }
    return text;
}

/// The text as it may arrive: lone surrogates replaced.
QString arriving(const QString &text)
{
    const auto codePoints = text.toUcs4();
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(codePoints.constData()),
                             codePoints.size());
}

TEST(SubmitPdu, anIndependentDecoderPutsAnyTextTogetherAgain)
{
    QRandomGenerator random(20240607);
    for (int round = 0; round < 400; ++round) {
        const QString text = randomText(random, random.bounded(round % 20 == 0 ? 5000 : 400));
        const auto reference = static_cast<quint16>(random.bounded(0x10000));
        const QList<SubmitPart> parts = partsOf({u"+34600"_s, text, reference, {}});
        QString together;
        int number = 0;
        for (const SubmitPart &part : parts) {
            const auto decoded = decodeSubmit(part.hex);
            ASSERT_TRUE(decoded.has_value()) << part.hex.toStdString();
            EXPECT_EQ(decoded->phone, u"+34600"_s);
            EXPECT_EQ(decoded->tpduLength, part.length);
            EXPECT_EQ(decoded->number, ++number);
            EXPECT_EQ(decoded->total, parts.size());
            EXPECT_EQ(part.number, number);
            EXPECT_EQ(part.total, parts.size());
            EXPECT_EQ(decoded->concatenationReference.has_value(), parts.size() > 1);
            EXPECT_EQ(decoded->concatenationReference.value_or(reference), reference);
            together += decoded->text;
        }
        ASSERT_EQ(together, arriving(text)) << "round " << round;
    }
}

TEST(SubmitPdu, everyCodePointArrives)
{
    QString text;
    const auto check = [&text] {
        QString together;
        for (const SubmitPart &part : partsOf({u"1"_s, text, 1, {}}))
            together += decodeSubmit(part.hex)->text;
        EXPECT_EQ(together, text);
        text.clear();
    };
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code <= 0xDFFF)
            continue;
        text += QString::fromUcs4(&code, 1);
        if (text.size() >= 5000)
            check();
    }
    check();
}

} // namespace

} // namespace norvane
