#include "TovekSMService/modem/codec/IncomingPdu.h"

#include "TovekSMService/modem/codec/GsmAlphabet.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The sender +34612345678 and, behind TP-PID, what follows.
const QByteArray fromAna = "0B914316325476F8";
/// 22 November 2026, 10:20:30, one hour east of Greenwich.
const QByteArray moment = "62112201020340";

QByteArray deliver(const QByteArray &first, const QByteArray &scheme, const QByteArray &data)
{
    return "00" + first + fromAna + "00" + scheme + moment + data;
}

DeliverPdu parsed(const QByteArray &hex)
{
    const Result<DeliverPdu, PduFailure> result = parseDeliver(hex);
    EXPECT_TRUE(result.has_value()) << hex.toStdString();
    return result.value_or(DeliverPdu());
}

QByteArray hexOf(int octet)
{
    return QByteArray::number(octet, 16).rightJustified(2, '0').toUpper();
}

/// User data of septets behind a header of `elements`.
QByteArray septetData(const QByteArray &elements, const QByteArray &septets)
{
    const int headerBits = static_cast<int>(elements.size() / 2 + 1) * 8;
    const int headerSeptets = (headerBits + 6) / 7;
    return hexOf(headerSeptets + static_cast<int>(septets.size())) +
           hexOf(static_cast<int>(elements.size() / 2)) + elements +
           GsmAlphabet::pack(septets, headerSeptets * 7 - headerBits).toHex().toUpper();
}

} // namespace

TEST(IncomingPdu, readsTheMessageThatTutorialsHaveCarriedForDecades)
{
    const DeliverPdu message =
        parsed("07917283010010F5040BC87238880900F10000993092516195800AE8329BFD4697D9EC37");
    EXPECT_EQ(message.sender, u"27838890001"_s);
    EXPECT_EQ(message.text, u"hellohello"_s);
    EXPECT_EQ(message.content, DeliverPdu::Content::Text);
    EXPECT_EQ(message.sentAt.toString(Qt::ISODate), u"1999-03-29T15:16:59+02:00"_s);
    EXPECT_FALSE(message.concatenation.has_value());
    EXPECT_FALSE(message.messageClass.has_value());
}

TEST(IncomingPdu, anInternationalSenderBeginsWithPlus)
{
    EXPECT_EQ(parsed(deliver("04", "00", "00")).sender, u"+34612345678"_s);
}

TEST(IncomingPdu, aSenderMayHaveAName)
{
    // "Norvane" in 7 septets: 13 semi-octets, rounded up to whole octets.
    const QByteArray name = GsmAlphabet::pack(GsmAlphabet::toSeptets(u"Norvane").value());
    const DeliverPdu message = parsed("00040DD0" + name.toHex().toUpper() + "0000" + moment + "00");
    EXPECT_EQ(message.sender, u"Norvane"_s);
}

TEST(IncomingPdu, theZoneMayLieWestOfGreenwich)
{
    // Minus three hours: 12 quarters with the sign bit.
    const DeliverPdu message = parsed("0004" + fromAna + "0000" + "62112201020329" + "00");
    EXPECT_EQ(message.sentAt.toString(Qt::ISODate), u"2026-11-22T10:20:30-03:00"_s);
}

TEST(IncomingPdu, aMomentThatMakesNoSenseIsNoneAndLosesNoText)
{
    const DeliverPdu message =
        parsed("0004" + fromAna + "0000" + "62319901020340" + "05E8329BFD06");
    EXPECT_FALSE(message.sentAt.isValid());
    EXPECT_EQ(message.text, u"hello"_s);
}

TEST(IncomingPdu, readsUcs2WithSurrogatePairs)
{
    EXPECT_EQ(parsed(deliver("04", "08", "06D83DDE0000E1")).text, u"\U0001F600\u00E1"_s);
}

TEST(IncomingPdu, showsEightBitsAsHexadecimal)
{
    const DeliverPdu message = parsed(deliver("04", "04", "03 01FFA0"_ba.replace(" ", "")));
    EXPECT_EQ(message.content, DeliverPdu::Content::Binary);
    EXPECT_EQ(message.text, u"01FFA0"_s);
}

TEST(IncomingPdu, readsTheCodingSchemeByItsGroups)
{
    struct Row
    {
        const char *scheme;
        DeliverPdu::Content content;
        int messageClass; ///< -1 for none
    };
    using Content = DeliverPdu::Content;
    const Row rows[] = {
        {"00", Content::Text, -1},   {"10", Content::Text, 0},   {"11", Content::Text, 1},
        {"04", Content::Binary, -1}, {"16", Content::Binary, 2}, {"08", Content::Text, -1},
        {"18", Content::Text, 0},    {"0C", Content::Text, -1},  {"20", Content::Binary, -1},
        {"48", Content::Text, -1},   {"C0", Content::Text, -1},  {"D0", Content::Text, -1},
        {"E0", Content::Text, -1},   {"F0", Content::Text, 0},   {"F6", Content::Binary, 2},
        {"80", Content::Text, -1}};
    for (const Row &row : rows) {
        const DeliverPdu message = parsed(deliver("04", row.scheme, "020041"));
        EXPECT_EQ(message.content, row.content) << row.scheme;
        EXPECT_EQ(message.messageClass.value_or(-1), row.messageClass) << row.scheme;
    }
    EXPECT_EQ(parsed(deliver("04", "E0", "020041")).text, u"A"_s);
}

TEST(IncomingPdu, readsWhichPartOfALongMessageItIs)
{
    const DeliverPdu narrow = parsed(deliver("44", "00", septetData("00032A0302", "a")));
    EXPECT_EQ(narrow.concatenation, (Concatenation{0x2A, false, 3, 2}));
    EXPECT_EQ(narrow.text, u"a"_s);
    const DeliverPdu wide = parsed(deliver("44", "00", septetData("0804012A0303", "xyz")));
    EXPECT_EQ(wide.concatenation, (Concatenation{0x012A, true, 3, 3}));
    EXPECT_EQ(wide.text, u"xyz"_s);
}

TEST(IncomingPdu, aConcatenationThatMakesNoSenseIsNone)
{
    for (const char *const elements : {"00032A0000", "00032A0203", "00032A0300"})
        EXPECT_FALSE(
            parsed(deliver("44", "00", septetData(elements, "a"))).concatenation.has_value())
            << elements;
}

TEST(IncomingPdu, anUnknownElementIsSkipped)
{
    const DeliverPdu message = parsed(deliver("44", "00", septetData("7002ABCD00032A0201", "a")));
    EXPECT_EQ(message.concatenation, (Concatenation{0x2A, false, 2, 1}));
    EXPECT_EQ(message.text, u"a"_s);
}

TEST(IncomingPdu, readsTheSpanishSingleShift)
{
    // Escape before each of the letters that the default alphabet doesn't hold.
    const QByteArray septets("\x1B\x61\x1B\x49\x1B\x6F\x1B\x55\x1B\x09\x1B\x65", 12);
    EXPECT_EQ(parsed(deliver("44", "00", septetData("240102", septets))).text,
              u"\u00E1\u00CD\u00F3\u00DA\u00E7\u20AC"_s);
}

TEST(IncomingPdu, readsThePortugueseShifts)
{
    const QByteArray septets("\x7B\x04\x5C\x1B\x7F\x1B\x61", 7);
    EXPECT_EQ(parsed(deliver("44", "00", septetData("250103240103", septets))).text,
              u"\u00E3\u00EA\u00D5\u00E2\u00C2"_s);
}

TEST(IncomingPdu, anotherLanguageIsReadAsTheDefault)
{
    EXPECT_EQ(parsed(deliver("44", "00", septetData("250101240101", "\x1B\x65\x04"))).text,
              u"\u20AC\u00E8"_s);
}

TEST(IncomingPdu, aPictureNotificationIsKnownByItsPort)
{
    for (const char *const ports : {"05040B8423F0", "05040B8523F0"}) {
        const DeliverPdu message =
            parsed(deliver("44", "04", "0A06" + QByteArray(ports) + "010203"));
        EXPECT_EQ(message.content, DeliverPdu::Content::PictureNotification) << ports;
        EXPECT_TRUE(message.text.isEmpty());
    }
    EXPECT_EQ(parsed(deliver("44", "04",
                             "0A06"
                             "050423F423F0"
                             "010203"))
                  .content,
              DeliverPdu::Content::Binary)
        << "a calendar's port";
}

TEST(IncomingPdu, aHeaderBeyondItsDataIsAFailure)
{
    EXPECT_EQ(parseDeliver(deliver("44", "04", "03050102")).error(), PduFailure::BadHeader);
    EXPECT_EQ(parseDeliver(deliver("44", "04", "04030003FF")).error(), PduFailure::BadHeader);
    EXPECT_EQ(parseDeliver(deliver("44", "04", "00")).error(), PduFailure::BadHeader);
}

TEST(IncomingPdu, whatEndsTooSoonIsAFailureAtEveryOctet)
{
    const QByteArray whole = deliver("44", "00", septetData("00032A0302", "hello"));
    for (qsizetype length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(parseDeliver(whole.left(length)).has_value()) << length;
    EXPECT_TRUE(parseDeliver(whole).has_value());
}

TEST(IncomingPdu, whatIsNoHexadecimalIsAFailure)
{
    EXPECT_EQ(parseDeliver("0G").error(), PduFailure::NotHexadecimal);
    EXPECT_EQ(parseDeliver("000").error(), PduFailure::NotHexadecimal);
    EXPECT_EQ(parseDeliver("").error(), PduFailure::TooShort);
}

TEST(IncomingPdu, anAddressOfMoreDigitsThanFitIsAFailure)
{
    EXPECT_EQ(parseDeliver("0004FF91" + QByteArray(256, '1') + "0000" + moment + "00").error(),
              PduFailure::BadAddress);
}

TEST(IncomingPdu, readsAStatusReport)
{
    const auto report = parseStatusReport("00062A" + fromAna + moment + "62112201025340" + "46");
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(report->reference, 0x2A);
    EXPECT_EQ(report->recipient, u"+34612345678"_s);
    EXPECT_EQ(report->at.toString(Qt::ISODate), u"2026-11-22T10:20:35+01:00"_s);
    EXPECT_EQ(report->status, 0x46);
}

TEST(IncomingPdu, aStatusReportMayCarryMoreBehindItsStatus)
{
    EXPECT_EQ(parseStatusReport("00062A" + fromAna + moment + moment + "00FF0000").value().status,
              0);
}

TEST(IncomingPdu, aMessageIsNoReportAndAReportNoMessage)
{
    const QByteArray report = "00062A" + fromAna + moment + moment + "00";
    const QByteArray message = deliver("04", "00", "00");
    EXPECT_EQ(parseDeliver(report).error(), PduFailure::WrongType);
    EXPECT_EQ(parseStatusReport(message).error(), PduFailure::WrongType);
    EXPECT_EQ(kindOf(report), IncomingKind::StatusReport);
    EXPECT_EQ(kindOf(message), IncomingKind::Deliver);
    EXPECT_FALSE(kindOf("0001").has_value()) << "a message of ours, stored on the SIM";
    EXPECT_FALSE(kindOf("zz").has_value());
}

} // namespace norvane
