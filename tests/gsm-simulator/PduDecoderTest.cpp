#include "gsm-simulator/PduDecoder.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

using Result = std::variant<SubmittedPart, PduFault>;

/// Decodes a PDU whose told length agrees with it.
Result decode(const QByteArray &hexadecimal)
{
    const QByteArray octets = QByteArray::fromHex(hexadecimal);
    const int serviceCentre = octets.isEmpty() ? 0 : static_cast<unsigned char>(octets.front());
    return decodeSubmission(hexadecimal, static_cast<int>(octets.size()) - 1 - serviceCentre);
}

struct Good
{
    const char *what;
    const char *pdu;
    const char *number;
    const char16_t *text;
    Coding coding;
};

struct Bad
{
    const char *what;
    const char *pdu;
    PduFault fault;
};

void PrintTo(const Good &row, std::ostream *stream)
{
    *stream << row.what;
}

void PrintTo(const Bad &row, std::ostream *stream)
{
    *stream << row.what;
}

class GoodPdu : public testing::TestWithParam<Good>
{};

class BadPdu : public testing::TestWithParam<Bad>
{};

} // namespace

TEST_P(GoodPdu, isReadAsItSays)
{
    const Good &row = GetParam();
    const Result result = decode(row.pdu);
    ASSERT_TRUE(std::holds_alternative<SubmittedPart>(result))
        << "fault " << static_cast<int>(std::get<PduFault>(result));
    const auto &part = std::get<SubmittedPart>(result);
    EXPECT_EQ(part.number, QString::fromLatin1(row.number));
    EXPECT_EQ(part.text, QStringView(row.text).toString());
    EXPECT_EQ(part.coding, row.coding);
    EXPECT_EQ(part.pdu, QByteArray(row.pdu).toUpper());
    EXPECT_FALSE(part.hasHeader);
    EXPECT_FALSE(part.concatenation);
}

INSTANTIATE_TEST_SUITE_P(
    PduDecoder, GoodPdu,
    testing::Values(
        Good{"relative validity", "0011000B916407281553F80000AA0AE8329BFD4697D9EC37",
             "+46708251358", u"hellohello", Coding::Gsm7},
        Good{"no validity", "0001000B916407281553F800000AE8329BFD4697D9EC37", "+46708251358",
             u"hellohello", Coding::Gsm7},
        Good{"with a service centre",
             "07914306000000F011000B914306101122F20000FF0AE8329BFD4697D9EC37", "+34600111222",
             u"hellohello", Coding::Gsm7},
        Good{"in small letters", "0001000b916407281553f800000ae8329bfd4697d9ec37", "+46708251358",
             u"hellohello", Coding::Gsm7},
        Good{"absolute validity", "0019000B916407281553F800004211200123258A0AE8329BFD4697D9EC37",
             "+46708251358", u"hellohello", Coding::Gsm7},
        Good{"enhanced validity", "0009000B916407281553F80000011E00000000000AE8329BFD4697D9EC37",
             "+46708251358", u"hellohello", Coding::Gsm7},
        Good{"report asked and duplicates refused",
             "0025000B916407281553F800000AE8329BFD4697D9EC37", "+46708251358", u"hellohello",
             Coding::Gsm7},
        Good{"number of unknown type and odd length", "000100098106101122F200000141", "600111222",
             u"A", Coding::Gsm7},
        Good{"star, hash and letters in a number", "0001000581BADCFE00000141", "*#abc", u"A",
             Coding::Gsm7},
        Good{"alphanumeric recipient", "0001000BD0C4F23C7D760300000141", "Design", u"A",
             Coding::Gsm7},
        Good{"extension table", "000100098106101122F20000049BF28607", "600111222", u"€[",
             Coding::Gsm7},
        Good{"at sign at the end of seven octets", "000100098106101122F200000831D98C56B3DD00",
             "600111222", u"1234567@", Coding::Gsm7},
        Good{"seven septets and their fill", "000100098106101122F200000731D98C56B3DD00",
             "600111222", u"1234567", Coding::Gsm7},
        Good{"no text at all", "000100098106101122F2000000", "600111222", u"", Coding::Gsm7},
        Good{"UCS-2", "000100098106101122F200080C005000720065007E006F0416", "600111222", u"Pre~oЖ",
             Coding::Ucs2},
        Good{"UCS-2 beyond the basic plane", "000100098106101122F2000804D83DDE00", "600111222",
             u"\U0001F600", Coding::Ucs2},
        Good{"UCS-2 with a byte order mark, which is a character like others",
             "000100098106101122F2000804FEFF0041", "600111222", u"\uFEFFA", Coding::Ucs2},
        Good{"octets", "000100098106101122F200040341FF80", "600111222", u"A\u00FF\u0080",
             Coding::Octets},
        Good{"flash message", "000100098106101122F200100141", "600111222", u"A", Coding::Gsm7},
        Good{"flash message in UCS-2", "000100098106101122F20018020041", "600111222", u"A",
             Coding::Ucs2},
        Good{"message class group, octets", "000100098106101122F200F50141", "600111222", u"A",
             Coding::Octets},
        Good{"message waiting in UCS-2", "000100098106101122F200E0020041", "600111222", u"A",
             Coding::Ucs2}));

TEST_P(BadPdu, isRefused)
{
    const Bad &row = GetParam();
    const Result result = decode(row.pdu);
    ASSERT_TRUE(std::holds_alternative<PduFault>(result));
    EXPECT_EQ(std::get<PduFault>(result), row.fault);
}

INSTANTIATE_TEST_SUITE_P(
    PduDecoder, BadPdu,
    testing::Values(
        Bad{"nothing", "", PduFault::Truncated},
        Bad{"half an octet", "000", PduFault::NotHexadecimal},
        Bad{"no digit", "00G1", PduFault::NotHexadecimal},
        Bad{"a blank", "00 1", PduFault::NotHexadecimal},
        Bad{"service centre too long", "0C9143060000000000000000000011000B91",
            PduFault::BadServiceCentre},
        Bad{"service centre of one octet", "019101000981", PduFault::BadServiceCentre},
        Bad{"service centre that is no number", "0291AF0100", PduFault::BadServiceCentre},
        Bad{"service centre without the type's bit", "02114301", PduFault::BadServiceCentre},
        Bad{"service centre alone", "0791430600", PduFault::Truncated},
        Bad{"only a first octet", "0001", PduFault::Truncated},
        Bad{"a delivery", "0000000B916407281553F800000AE8329BFD4697D9EC37", PduFault::BadType},
        Bad{"a command", "0002000B916407281553F800000AE8329BFD4697D9EC37", PduFault::BadType},
        Bad{"empty number", "000100009100000141", PduFault::BadAddress},
        Bad{"number of 21 digits", "00010015911111111111111111111111F100000141",
            PduFault::BadAddress},
        Bad{"type of number without its bit", "000100091106101122F200000141", PduFault::BadAddress},
        Bad{"filler within a number", "00010009810F101122F200000141", PduFault::BadAddress},
        Bad{"odd number ending in a digit", "0001000981061011220200000141", PduFault::BadAddress},
        Bad{"alphanumeric of no character", "00010001D00400000141", PduFault::BadAddress},
        Bad{"number cut off", "00010009810610", PduFault::Truncated},
        Bad{"no coding", "000100098106101122F200", PduFault::Truncated},
        Bad{"compressed", "000100098106101122F200200141", PduFault::BadCoding},
        Bad{"reserved coding", "000100098106101122F2000C0141", PduFault::BadCoding},
        Bad{"reserved coding group", "000100098106101122F200800141", PduFault::BadCoding},
        Bad{"reserved bit of the class group", "000100098106101122F200F80141", PduFault::BadCoding},
        Bad{"month 13", "001900098106101122F200004231200123258A0141", PduFault::BadValidity},
        Bad{"hour 24", "001900098106101122F200004211204223258A0141", PduFault::BadValidity},
        Bad{"no decimal digit in a time", "001900098106101122F2000042112001232F8A0141",
            PduFault::BadValidity},
        Bad{"reserved validity form", "000900098106101122F20000050000000000000141",
            PduFault::BadValidity},
        Bad{"validity cut off", "001900098106101122F2000042", PduFault::Truncated},
        Bad{"no user data length", "000100098106101122F20000", PduFault::Truncated},
        Bad{"user data too short", "000100098106101122F2000009E8329BFD4697D9", PduFault::Truncated},
        Bad{"an octet too many", "0001000B916407281553F800000AE8329BFD4697D9EC3700",
            PduFault::TrailingOctets},
        Bad{"half a UCS-2 character", "000100098106101122F2000803004100", PduFault::BadUserData},
        Bad{"header longer than the user data", "004100098106101122F2000403050003",
            PduFault::BadHeader},
        Bad{"element runs over", "004100098106101122F2000406050009010203", PduFault::BadHeader},
        Bad{"element without a length", "004100098106101122F20004020124", PduFault::BadHeader},
        Bad{"part 0", "004100098106101122F2000406050003CC0200", PduFault::BadHeader},
        Bad{"part behind the last", "004100098106101122F2000406050003CC0203", PduFault::BadHeader},
        Bad{"no parts", "004100098106101122F2000406050003CC0000", PduFault::BadHeader},
        Bad{"short reference in a long form", "004100098106101122F2000407060004CC020101",
            PduFault::BadHeader},
        Bad{"another national alphabet", "004100098106101122F200040403240101", PduFault::BadHeader},
        Bad{"header fills more septets than told", "004100098106101122F2000006050003CC0201",
            PduFault::BadUserData}));

TEST(PduDecoder, readsTheHeaderOfAPartAndSkipsItsFillBits)
{
    struct Row
    {
        const char *pdu;
        Concatenation concatenation;
        const char16_t *text;
    };
    const Row rows[] = {
        {"004100098106101122F200000C050003CC0201906536FB0D", {0xCC, 1, 2}, u"Hello"},
        {"004100098106101122F200000D06080412340302C8329BFD06", {0x1234, 2, 3}, u"Hello"},
        {"004100098106101122F200080A050003000202D83DDE00", {0, 2, 2}, u"\U0001F600"},
        {"004100098106101122F2000407050003FFFFFF41", {255, 255, 255}, u"A"},
    };
    for (const Row &row : rows) {
        const Result result = decode(row.pdu);
        ASSERT_TRUE(std::holds_alternative<SubmittedPart>(result)) << row.pdu;
        const auto &part = std::get<SubmittedPart>(result);
        EXPECT_TRUE(part.hasHeader);
        EXPECT_EQ(part.concatenation, row.concatenation) << row.pdu;
        EXPECT_EQ(part.text, QString::fromUtf16(row.text)) << row.pdu;
    }
}

TEST(PduDecoder, ofTwoReferencesTheLastCountsAndOtherElementsAreSkipped)
{
    // A port address, a short reference, a long reference, then "A".
    const QByteArray header = "05040B8423F0"
                              "0003010201"
                              "080400050301";
    const QByteArray length = QByteArray::number(header.size() / 2, 16).rightJustified(2, '0');
    const QByteArray total = QByteArray::number(header.size() / 2 + 2, 16).rightJustified(2, '0');
    const Result result = decode("004100098106101122F20004" + total + length + header + "41");
    ASSERT_TRUE(std::holds_alternative<SubmittedPart>(result));
    EXPECT_EQ(std::get<SubmittedPart>(result).concatenation, (Concatenation{5, 1, 3}));
    EXPECT_EQ(std::get<SubmittedPart>(result).text, u"A"_s);
}

TEST(PduDecoder, takesAsManyUnitsAsAMessageHoldsAndNoMore)
{
    const QByteArray head = "000100098106101122F200";
    struct Row
    {
        const char *coding;
        int length;
        int octets;
        bool good;
    };
    static constexpr Row pduRows[] = {{"00", 160, 140, true}, {"00", 161, 141, false},
                                      {"04", 140, 140, true}, {"04", 141, 141, false},
                                      {"08", 140, 140, true}, {"08", 142, 142, false}};
    for (const Row &row : pduRows) {
        const QByteArray length = QByteArray::number(row.length, 16).rightJustified(2, '0');
        const Result result =
            decode(head + row.coding + length + QByteArray(row.octets, 'a').toHex());
        EXPECT_EQ(std::holds_alternative<SubmittedPart>(result), row.good)
            << row.coding << ' ' << row.length;
    }
}

TEST(PduDecoder, theToldLengthHasToBeThatOfThePdu)
{
    const QByteArray pdu = "07914306000000F011000B914306101122F20000FF0AE8329BFD4697D9EC37";
    for (const int length : {0, 22, 24, 31}) {
        const Result result = decodeSubmission(pdu, length);
        ASSERT_TRUE(std::holds_alternative<PduFault>(result)) << length;
        EXPECT_EQ(std::get<PduFault>(result), PduFault::WrongLength);
    }
    EXPECT_TRUE(std::holds_alternative<SubmittedPart>(decodeSubmission(pdu, 23)));
}

} // namespace simulator

} // namespace norvane
