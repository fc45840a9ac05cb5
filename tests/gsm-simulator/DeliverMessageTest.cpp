#include "gsm-simulator/DeliverMessage.h"

#include "gsm-simulator/ReceivedPdu.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

DeliverMessage messageOf(const QString &text, Coding coding = Coding::Gsm7)
{
    DeliverMessage message;
    message.sender = {u"+34600111222"_s, Address::internationalType};
    message.time = QDateTime(QDate(2026, 12, 31), QTime(23, 59, 58), Qt::OffsetFromUTC, 3600);
    message.text = text;
    message.coding = coding;
    message.dataCodingScheme = coding == Coding::Ucs2 ? 8 : coding == Coding::Octets ? 4 : 0;
    return message;
}

/// The octets of a message's parts, in digits.
QByteArray octetsOf(const DeliverMessage &message)
{
    QByteArrayList all;
    for (const QByteArray &tpdu : deliverTpdus(message).value_or(QByteArrayList()))
        all += tpdu.toHex().toUpper();
    return all.join(' ');
}

/// The parts of a message as this program reads them.
std::vector<SubmittedPart> partsOf(const DeliverMessage &message)
{
    std::vector<SubmittedPart> parts;
    const auto tpdus = deliverTpdus(message);
    EXPECT_TRUE(tpdus.has_value());
    for (const QByteArray &tpdu : tpdus.value_or(QByteArrayList())) {
        const auto read = readReceived(tpdu);
        const auto *pdu = std::get_if<ReceivedPdu>(&read);
        parts.emplace_back();
        if (pdu == nullptr || decodeUserData(pdu->userData, parts.back()))
            ADD_FAILURE() << tpdu.toHex().data();
    }
    return parts;
}

QString joinedText(const std::vector<SubmittedPart> &parts)
{
    QString text;
    for (const SubmittedPart &part : parts)
        text += part.text;
    return text;
}

const QByteArray sender = "0B914306101122F2"_ba;
const QByteArray time = "62211332958540"_ba;

} // namespace

TEST(DeliverMessage, aShortTextIsOnePartWithoutAHeader)
{
    EXPECT_EQ(octetsOf(messageOf(u"hellohello"_s)),
              QByteArray("04" + sender + "0000" + time + "0AE8329BFD4697D9EC37"));
    EXPECT_EQ(octetsOf(messageOf(QString())), QByteArray("04" + sender + "0000" + time + "00"));
}

TEST(DeliverMessage, sendersAreNumbersOfEachKindOrNames)
{
    DeliverMessage message = messageOf(u"A"_s);
    message.sender = {u"600111222"_s, Address::nationalType};
    EXPECT_EQ(octetsOf(message), QByteArray("0409A106101122F20000" + time + "0141"));
    message.sender = {u"INFO"_s, Address::alphanumericType};
    EXPECT_EQ(octetsOf(message), QByteArray("0407D049A7F1090000" + time + "0141"));
    message.sender = {u"Ж"_s, Address::alphanumericType};
    EXPECT_EQ(deliverTpdus(message), std::nullopt);
    message.sender = {u"twelve chars"_s, Address::alphanumericType};
    EXPECT_EQ(deliverTpdus(message), std::nullopt);
}

TEST(DeliverMessage, ucs2HasItsUnitsInBigEndianOrder)
{
    EXPECT_EQ(octetsOf(messageOf(u"Ж😀"_s, Coding::Ucs2)),
              QByteArray("04" + sender + "0008" + time + "060416D83DDE00"));
}

TEST(DeliverMessage, languagesStandInTheHeader)
{
    DeliverMessage message = messageOf(u"á"_s);
    message.alphabet.single = Language::Spanish;
    EXPECT_EQ(octetsOf(message), QByteArray("44" + sender + "0000" + time + "0703240102D88401"));
    message = messageOf(u"ã"_s);
    message.alphabet.locking = Language::Portuguese;
    EXPECT_EQ(octetsOf(message), QByteArray("44" + sender + "0000" + time + "0603250103D803"));
}

TEST(DeliverMessage, portsStandInTheHeader)
{
    DeliverMessage message = messageOf({}, Coding::Octets);
    message.content = QByteArray::fromHex("0106");
    message.ports = {2948, 9200};
    EXPECT_EQ(octetsOf(message),
              QByteArray("44" + sender + "0004" + time + "090605040B8423F00106"));
    message.content = "\xFF";
    message.ports = {5, 6, false};
    EXPECT_EQ(octetsOf(message), QByteArray("44" + sender + "0004" + time + "060404020506FF"));
}

TEST(DeliverMessage, aPartTellsItsPlaceByAReferenceOfEitherWidth)
{
    DeliverMessage message = messageOf(u"A"_s);
    message.place = Concatenation{0x2A, 2, 3};
    EXPECT_EQ(octetsOf(message), QByteArray("44" + sender + "0000" + time + "080500032A030282"));
    message.place->reference = 0x1234;
    message.hasWideReference = true;
    EXPECT_EQ(octetsOf(message), QByteArray("44" + sender + "0000" + time + "090608041234030241"));
    message.text = QString(154, u'a');
    EXPECT_EQ(deliverTpdus(message), std::nullopt);
}

TEST(DeliverMessage, protocolAndCodingSchemeAreThoseGiven)
{
    DeliverMessage message = messageOf(u"A"_s);
    message.protocol = 0x41;
    message.dataCodingScheme = 0x10;
    EXPECT_EQ(octetsOf(message), QByteArray("04" + sender + "4110" + time + "0141"));
}

TEST(DeliverMessage, partsAreAsLongAsTheirHeadersLetThem)
{
    struct Row
    {
        Coding coding;
        bool wide;
        qsizetype length;
        std::vector<qsizetype> parts;
    };
    for (const Row &row :
         {Row{Coding::Gsm7, false, 160, {160}}, Row{Coding::Gsm7, false, 161, {153, 8}},
          Row{Coding::Gsm7, true, 161, {152, 9}}, Row{Coding::Gsm7, false, 307, {153, 153, 1}},
          Row{Coding::Ucs2, false, 70, {70}}, Row{Coding::Ucs2, false, 71, {67, 4}},
          Row{Coding::Ucs2, true, 71, {66, 5}}}) {
        DeliverMessage message = messageOf(QString(row.length, u'a'), row.coding);
        message.hasWideReference = row.wide;
        message.reference = row.wide ? 0x0102 : 7;
        const std::vector<SubmittedPart> parts = partsOf(message);
        ASSERT_EQ(parts.size(), row.parts.size());
        for (std::size_t i = 0; i < parts.size(); ++i) {
            EXPECT_EQ(parts.at(i).text.size(), row.parts.at(i));
            if (parts.size() > 1) {
                EXPECT_EQ(parts.at(i).concatenation,
                          (Concatenation{message.reference, static_cast<int>(i) + 1,
                                         static_cast<int>(parts.size())}));
            }
        }
    }
}

TEST(DeliverMessage, noPartEndsWithinACharacter)
{
    const std::vector<SubmittedPart> escaped =
        partsOf(messageOf(QString(152, u'a') + u"€€€€€€€"_s));
    ASSERT_EQ(escaped.size(), 2U);
    EXPECT_EQ(escaped.front().text, QString(152, u'a'));
    const std::vector<SubmittedPart> paired =
        partsOf(messageOf(QString(66, u'a') + u"😀😀😀"_s, Coding::Ucs2));
    ASSERT_EQ(paired.size(), 2U);
    EXPECT_EQ(paired.front().text, QString(66, u'a'));
    EXPECT_EQ(paired.back().text, u"😀😀😀"_s);
}

TEST(DeliverMessage, thereAreNoMoreThan255Parts)
{
    EXPECT_EQ(partsOf(messageOf(QString(255 * 153, u'a'))).size(), 255U);
    EXPECT_EQ(deliverTpdus(messageOf(QString(255 * 153 + 1, u'a'))), std::nullopt);
}

TEST(DeliverMessage, aCharacterOutsideItsAlphabetIsNoMessage)
{
    EXPECT_EQ(deliverTpdus(messageOf(u"Ж"_s)), std::nullopt);
}

TEST(DeliverMessage, allOfUnicodeIsReadAgain)
{
    constexpr char32_t last = 0x10FFFF;
    constexpr int together = 200;
    QString text;
    for (char32_t point = 0; point <= last; ++point) {
        if (!QChar::isSurrogate(point))
            text += QStringView(QChar::fromUcs4(point));
        if (text.size() < together && point < last)
            continue;
        ASSERT_EQ(joinedText(partsOf(messageOf(text, Coding::Ucs2))), text) << quint32{point};
        text.clear();
    }
}

TEST(DeliverMessage, textsOfEveryAlphabetAndLengthAreReadAgain)
{
    for (const Language single : {Language::None, Language::Spanish, Language::Portuguese}) {
        for (const Language locking : {Language::None, Language::Spanish, Language::Portuguese}) {
            QString characters;
            for (int unit = 0; unit <= 0x2200; ++unit) {
                const QChar character(static_cast<char16_t>(unit));
                if (septetsOfText(character, {single, locking}))
                    characters += character;
            }
            for (int length = 0; length < 340; ++length) {
                QString text;
                for (int i = 0; i < length; ++i)
                    text += characters.at((i * 31 + length) % characters.size());
                DeliverMessage message = messageOf(text);
                message.alphabet = {single, locking};
                message.hasWideReference = length % 2 == 1;
                const std::vector<SubmittedPart> parts = partsOf(message);
                ASSERT_EQ(joinedText(parts), text) << length;
                ASSERT_EQ(parts.front().alphabet, message.alphabet);
            }
        }
    }
}

} // namespace simulator

} // namespace norvane
