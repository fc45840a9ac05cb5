#include "NorvaneSMS/queue/Normalisation.h"
#include "property/Arrival.h"
#include "property/Texts.h"

#include <gtest/gtest.h>

namespace {

constexpr int s_longest = 5000; // characters of a message that the console takes

TEST(AnyText, everyHardPieceArrivesAtEveryPlace)
{
    const QString fillers[] = {QStringLiteral("a"), QStringLiteral("€"), QStringLiteral("ω")};
    for (const NamedText &piece : pieces()) {
        for (const QString &filler : fillers) {
            // Around the ends of one message and of the first two parts, in either alphabet.
            for (const int before :
                 {0,  1,   34,  35,  64,  65,  66,  69,  70,  75,  76,  77,  79,
                  80, 130, 131, 132, 150, 151, 152, 158, 159, 160, 302, 303, 304}) {
                const QString text = filler.repeated(before) + piece.text + filler.repeated(90);
                ASSERT_EQ(arrivalOf(text).text, arriving(text))
                    << piece.name << " behind " << before << " of " << filler.toStdString();
            }
        }
    }
}

TEST(AnyText, fiveThousandCharactersOfEveryPieceArrive)
{
    for (const NamedText &piece : pieces()) {
        if (piece.text.isEmpty())
            continue;
        const QString text = piece.text.repeated(s_longest / piece.text.size() + 1).left(s_longest);
        ASSERT_EQ(arrivalOf(text).text, arriving(text)) << piece.name;
    }
}

TEST(AnyText, fiveThousandCharactersThatWasteHalfOfEveryPartArrive)
{
    // What a reader sees as one character stays whole: 34 units, of which a part holds one.
    const QString wide = QStringLiteral("e") + QStringLiteral("\u0301").repeated(33);
    const QString text = wide.repeated(s_longest / wide.size());
    const Arrival arrival = arrivalOf(text);
    EXPECT_EQ(arrival.text, text);
    EXPECT_EQ(arrival.cut.size(), s_longest / wide.size());
}

TEST(AnyText, everyCodePointArrives)
{
    QString text;
    for (char32_t code = 0; code <= 0x110000; ++code) {
        if (code == 0x110000 || text.size() >= s_longest - 1) {
            ASSERT_EQ(arrivalOf(text).text, text) << "before " << static_cast<quint32>(code);
            text.clear();
        }
        if (code < 0x110000 && (code < 0xD800 || code > 0xDFFF))
            text += QString::fromUcs4(&code, 1);
    }
}

TEST(AnyText, everyUnitArrivesAlone)
{
    for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
        const QString text(QChar(static_cast<char16_t>(unit)));
        ASSERT_EQ(arrivalOf(text).text, arriving(text)) << static_cast<quint32>(unit);
    }
}

TEST(AnyText, randomTextsArrive)
{
    QRandomGenerator random(20261120);
    for (int round = 0; round < 3000; ++round) {
        const QString text = randomText(random, round % 30 == 0 ? s_longest : 400);
        const auto reference = static_cast<quint16>(random.bounded(0x10000));
        ASSERT_EQ(arrivalOf(text, QStringLiteral("600"), reference).text, arriving(text))
            << "round " << round;
    }
}

TEST(AnyText, whatTheConsoleMakesOfATextArrivesLetterForLetter)
{
    QRandomGenerator random(4711);
    for (int round = 0; round < 1000; ++round) {
        const QString typed = randomText(random, round % 50 == 0 ? s_longest : 300);
        for (const bool keepAccents : {false, true}) {
            const QString queued = NormalizeSMSText(keepAccents, typed);
            ASSERT_EQ(queued.size(), typed.size()) << "round " << round;
            ASSERT_EQ(arrivalOf(queued).text, queued) << "round " << round;
        }
    }
}

TEST(AnyText, everyPhoneOfUpToTwentyDigitsArrives)
{
    const QString digits = QStringLiteral("0123456789*#abc");
    QRandomGenerator random(99);
    for (int round = 0; round < 2000; ++round) {
        QString phone = round % 2 == 0 ? QStringLiteral("+") : QString();
        for (int length = 1 + round / 2 % 20; length > 0; --length)
            phone += digits.at(random.bounded(static_cast<int>(digits.size())));
        ASSERT_EQ(arrivalOf(QStringLiteral("x"), phone).text, QStringLiteral("x")) << round;
    }
}

} // namespace
