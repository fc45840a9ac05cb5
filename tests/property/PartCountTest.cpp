#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "property/Arrival.h"
#include "property/Texts.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct LetterRow
{
    const char *name;
    QString letter;
    int single; ///< of which one message holds so many
    int part;   ///< and a part of several so many
};

QList<LetterRow> letterRows()
{
    return {
        {"a letter of the alphabet", u"a"_s, 160, 152},
        {"a line end", u"\n"_s, 160, 152},
        {"a letter of the extension table", u"€"_s, 80, 76},
        {"a letter of no alphabet", u"ω"_s, 70, 66},
        {"a pair", u"\U0001F600"_s, 35, 33},
        {"a letter with a mark", u"e\u0301"_s, 35, 33},
        {"a letter with two marks", u"e\u0301\u0323"_s, 23, 22},
        {"a flag", u"\U0001F1EA\U0001F1F8"_s, 17, 16},
        {"a family of three", u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s, 8, 8},
    };
}

int partsFor(int letters, const LetterRow &row)
{
    return letters <= row.single ? 1 : (letters + row.part - 1) / row.part;
}

TEST(PartCount, growsExactlyWhenAPartIsFull)
{
    for (const LetterRow &row : letterRows()) {
        for (int letters = 0; letters <= 4 * row.part + 1; ++letters) {
            const Arrival arrival = arrivalOf(row.letter.repeated(letters));
            ASSERT_EQ(arrival.cut.size(), partsFor(letters, row)) << letters << " of " << row.name;
            for (const QString &part : arrival.cut)
                ASSERT_EQ(part.size() % row.letter.size(), 0) << row.name << " is torn";
        }
    }
}

struct EdgeRow
{
    const char *name;
    QString text;
    QList<int> sizes; ///< of the parts, in UTF-16 units
};

QList<EdgeRow> edgeRows()
{
    const auto a = [](int count) { return u"a"_s.repeated(count); };
    const auto omega = [](int count) { return u"ω"_s.repeated(count); };
    const QString euro = u"€"_s;
    const QString smile = u"\U0001F600"_s;
    const QString half(QChar(0xD83D));
    return {
        {"160 septets", a(160), {160}},
        {"161 septets", a(161), {152, 9}},
        {"158 letters and an escape pair", a(158) + euro, {159}},
        {"159 letters and an escape pair", a(159) + euro, {152, 8}},
        {"150 letters, an escape pair, 9", a(150) + euro + a(9), {151, 9}},
        {"151 letters, an escape pair, 8", a(151) + euro + a(8), {151, 9}},
        {"152 letters, an escape pair, 7", a(152) + euro + a(7), {152, 8}},
        {"304 septets with a pair over the seam", a(151) + euro + a(151), {151, 151, 1}},
        {"pairs over both seams", a(151) + euro + a(149) + euro + a(2), {151, 150, 3}},
        {"70 units", omega(70), {70}},
        {"71 units", omega(71), {66, 5}},
        {"69 units and half a pair", omega(69) + half, {70}},
        {"69 units and a pair", omega(69) + smile, {66, 5}},
        {"64 units, a pair, 5", omega(64) + smile + omega(5), {66, 5}},
        {"65 units, a pair, 4", omega(65) + smile + omega(4), {65, 6}},
        {"66 units, a pair, 3", omega(66) + smile + omega(3), {66, 5}},
        {"one letter more than the alphabet", a(69) + omega(1), {70}},
        {"one letter more than fits then", a(70) + omega(1), {66, 5}},
    };
}

TEST(PartCount, isCutAtTheEdgesAsTheTableSays)
{
    for (const EdgeRow &row : edgeRows()) {
        const Arrival arrival = arrivalOf(row.text);
        EXPECT_EQ(arrival.text, arriving(row.text)) << row.name;
        QList<int> sizes;
        for (const QString &part : arrival.cut)
            sizes.append(static_cast<int>(part.size()));
        EXPECT_EQ(sizes, row.sizes) << row.name;
    }
}

TEST(PartCount, anEscapePairIsNeverTornWhereverItStands)
{
    constexpr int septets = 3 * 152;
    for (int before = 0; before <= septets - 2; ++before) {
        const QString text =
            u"a"_s.repeated(before) + u"€"_s + u"a"_s.repeated(septets - 2 - before);
        // A pair that would lie over a seam goes to the next part, and everything behind moves.
        const bool atSeam = before % 152 == 151;
        const Arrival arrival = arrivalOf(text);
        ASSERT_EQ(arrival.cut.size(), atSeam ? 4 : 3) << before;
        ASSERT_EQ(arrival.text, text) << before;
    }
}

TEST(PartCount, whatIsOneCharacterToAReaderIsNeverTorn)
{
    for (const char *name : {"a family", "a hand of a colour", "a flag", "a flag of a region",
                             "a letter with three marks", "Hangul in its parts", "a key"}) {
        const QList<NamedText> all = pieces();
        const auto piece = std::find_if(all.begin(), all.end(), [name](const NamedText &named) {
            return qstrcmp(named.name, name) == 0;
        });
        ASSERT_NE(piece, all.end()) << name;
        for (int before = 0; before <= 140; ++before) {
            const QString text =
                u"ω"_s.repeated(before) + piece->text + u"ω"_s.repeated(150 - before);
            qsizetype seam = 0;
            for (const QString &part : arrivalOf(text).cut) {
                seam += part.size();
                ASSERT_FALSE(seam > before && seam < before + piece->text.size())
                    << name << " behind " << before;
            }
        }
    }
}

TEST(PartCount, endsAtTwoHundredAndFiftyFive)
{
    for (const LetterRow &row : letterRows()) {
        const QString longest = row.letter.repeated(255 * row.part);
        EXPECT_EQ(arrivalOf(longest).cut.size(), 255) << row.name;
        const auto more = encodeSubmit({u"600"_s, longest + row.letter, 1, {}});
        ASSERT_FALSE(more.has_value()) << row.name;
        EXPECT_EQ(more.error(), EncodeError::TextTooLong) << row.name;
    }
}

} // namespace

} // namespace norvane
