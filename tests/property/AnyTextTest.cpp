#include "foundation/Normalisation.h"
#include "property/Arrival.h"
#include "property/Texts.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int max = 5000; // characters of a message that the console takes

TEST(AnyText, everyHardPieceArrivesAtEveryPlace)
{
    const QString fillers[] = {u"a"_s, u"€"_s, u"ω"_s};
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
        const QString text = piece.text.repeated(max / piece.text.size() + 1).left(max);
        ASSERT_EQ(arrivalOf(text).text, arriving(text)) << piece.name;
    }
}

TEST(AnyText, fiveThousandCharactersThatWasteHalfOfEveryPartArrive)
{
    // What a reader sees as one character stays whole: 34 units, of which a part holds one.
    const QString wide = u"e"_s + u"\u0301"_s.repeated(33);
    const QString text = wide.repeated(max / wide.size());
    const Arrival arrival = arrivalOf(text);
    EXPECT_EQ(arrival.text, text);
    EXPECT_EQ(arrival.cut.size(), max / wide.size());
}

TEST(AnyText, everyCodePointArrives)
{
    QString text;
    for (char32_t code = 0; code <= 0x110000; ++code) {
        if (code == 0x110000 || text.size() >= max - 1) {
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
        const QString text = randomText(random, round % 30 == 0 ? max : 400);
        const auto reference = static_cast<quint16>(random.bounded(0x10000));
        ASSERT_EQ(arrivalOf(text, u"600"_s, reference).text, arriving(text)) << "round " << round;
    }
}

TEST(AnyText, whatTheConsoleMakesOfATextArrivesLetterForLetter)
{
    QRandomGenerator random(4711);
    for (int round = 0; round < 1000; ++round) {
        const QString typed = randomText(random, round % 50 == 0 ? max : 300);
        for (const bool keepAccents : {false, true}) {
            const QString queued = NormalizeSMSText(keepAccents, typed);
            ASSERT_EQ(queued.size(), typed.size()) << "round " << round;
            ASSERT_EQ(arrivalOf(queued).text, queued) << "round " << round;
        }
    }
}

TEST(AnyText, everyPhoneOfUpToTwentyDigitsArrives)
{
    const QString digits = u"0123456789*#abc"_s;
    QRandomGenerator random(99);
    for (int round = 0; round < 2000; ++round) {
        QString phone = round % 2 == 0 ? u"+"_s : QString();
        for (int length = 1 + round / 2 % 20; length > 0; --length)
            phone += digits.at(random.bounded(static_cast<int>(digits.size())));
        ASSERT_EQ(arrivalOf(u"x"_s, phone).text, u"x"_s) << round;
    }
}

} // namespace

} // namespace norvane
