#include "TovekSMService/modem/codec/GsmAlphabet.h"
#include "TovekSMService/modem/codec/IncomingPdu.h"
#include "gsm-simulator/DeliverMessage.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int ucs2Scheme = 0x08;

simulator::DeliverMessage messageOf(const QString &text, simulator::Alphabet alphabet = {})
{
    simulator::DeliverMessage message;
    message.sender = {u"+34612345678"_s, simulator::Address::internationalType};
    message.time = QDateTime(QDate(2026, 11, 22), QTime(10, 20, 30), Qt::OffsetFromUTC, 3600);
    message.alphabet = alphabet;
    message.text = text;
    message.reference = 7;
    return message;
}

/// What the engine reads from the parts of a message, the last one first.
QString receivedFrom(const simulator::DeliverMessage &message)
{
    const std::optional<QByteArrayList> tpdus = simulator::deliverTpdus(message);
    EXPECT_TRUE(tpdus.has_value()) << "a text of " << message.text.size() << " can't be encoded";
    if (!tpdus)
        return {};
    QStringList texts(tpdus->size());
    for (qsizetype i = tpdus->size() - 1; i >= 0; --i) {
        const auto part = parseDeliver("00" + tpdus->at(i).toHex().toUpper());
        if (!part) {
            ADD_FAILURE() << "a part can't be read: " << tpdus->at(i).toHex().toStdString();
            return {};
        }
        EXPECT_EQ(part->sender, message.sender.text);
        EXPECT_EQ(part->sentAt, message.time);
        const Concatenation place = part->concatenation.value_or(Concatenation());
        EXPECT_EQ(place.total, tpdus->size());
        EXPECT_EQ(place.number, i + 1);
        texts[i] = part->text;
    }
    return texts.join(QString());
}

QString throughUcs2(const QString &text)
{
    simulator::DeliverMessage message = messageOf(text);
    message.coding = simulator::Coding::Ucs2;
    message.dataCodingScheme = ucs2Scheme;
    return receivedFrom(message);
}

TEST(ReceivedText, everyCodePointArrivesInUcs2)
{
    constexpr char32_t end = 0x110000;
    constexpr qsizetype maxUnits = 5000;
    QString text;
    for (char32_t code = 0; code <= end; ++code) {
        if (code == end || text.size() >= maxUnits) {
            ASSERT_EQ(throughUcs2(text), text) << "before " << static_cast<quint32>(code);
            text.clear();
        }
        if (code < end && (code < 0xD800 || code > 0xDFFF))
            text += QChar::fromUcs4(code);
    }
}

struct AlphabetRow
{
    simulator::Alphabet alphabet;
    int characters; ///< that it has, a letter of both tables counted once
};

QList<AlphabetRow> alphabetRows()
{
    using simulator::Language;
    return {
        {{Language::None, Language::None}, 127 + 10},
        {{Language::Spanish, Language::None}, 127 + 10 + 9},
        {{Language::Portuguese, Language::None}, 127 + 10 + 20},
        {{Language::None, Language::Portuguese}, 127 + 5},
        {{Language::Spanish, Language::Portuguese}, 127 + 5},
        {{Language::Portuguese, Language::Portuguese}, 127 + 5 + 7},
        {{Language::None, Language::Spanish}, 127 + 10},
        {{Language::Spanish, Language::Spanish}, 127 + 10 + 9},
        {{Language::Portuguese, Language::Spanish}, 127 + 10 + 20},
    };
}

std::string nameOf(const simulator::Alphabet &alphabet)
{
    return "single " + std::to_string(static_cast<int>(alphabet.single)) + ", locking " +
           std::to_string(static_cast<int>(alphabet.locking));
}

/// Every character that can be sent with these tables.
QString charactersOf(const simulator::Alphabet &alphabet)
{
    QString characters;
    for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
        const QString character(QChar(static_cast<char16_t>(unit)));
        if (simulator::septetsOfText(character, alphabet))
            characters += character;
    }
    return characters;
}

TEST(ReceivedText, everyCharacterOfEveryAlphabetArrives)
{
    for (const AlphabetRow &row : alphabetRows()) {
        const QString characters = charactersOf(row.alphabet);
        EXPECT_EQ(characters.size(), row.characters) << nameOf(row.alphabet);
        // Behind each number of letters, so that every character stands at every bit of an octet.
        for (int before = 0; before < 8; ++before) {
            const QString text = u"a"_s.repeated(before) + characters;
            EXPECT_EQ(receivedFrom(messageOf(text, row.alphabet)), text) << nameOf(row.alphabet);
        }
        for (const QChar character : characters)
            EXPECT_EQ(receivedFrom(messageOf(character, row.alphabet)), QString(character))
                << nameOf(row.alphabet) << ": " << QString(character).toStdString();
    }
}

TEST(ReceivedText, anySeptetsAreReadAsTheStandardTellsAReceiverTo)
{
    constexpr int septets = 128;
    for (const AlphabetRow &row : alphabetRows()) {
        const auto single = static_cast<GsmLanguage>(row.alphabet.single);
        const auto locking = static_cast<GsmLanguage>(row.alphabet.locking);
        for (int first = 0; first < septets; ++first) {
            for (int second = 0; second < septets; ++second) {
                QByteArray pair(1, static_cast<char>(first));
                pair += static_cast<char>(second);
                for (const QByteArray &each : {pair, "\x1B" + pair})
                    ASSERT_EQ(GsmAlphabet::fromSeptets(each, locking, single),
                              simulator::textOfSeptets(each, row.alphabet))
                        << nameOf(row.alphabet) << ": " << each.toHex().toStdString();
            }
        }
    }
}

} // namespace

} // namespace norvane
