#include "TovekSMService/modem/codec/GsmAlphabet.h"

#include <gtest/gtest.h>

#include <QString>

namespace norvane {

namespace {

struct PackRow
{
    const char *text;
    int fillBits;
    const char *hex;
};

// The first three are the examples that tutorials on the PDU format have carried for decades; the
// others follow from 3GPP TS 23.038, 6.1.2.1.1, by hand.
const PackRow packRows[] = {
    {"hellohello", 0, "E8329BFD4697D9EC37"},
    {"How are you?", 0, "C8F71D14969741F977FD07"},
    {"hello", 0, "E8329BFD06"},
    {"", 0, ""},
    {"", 3, ""},
    {"A", 0, "41"},
    {"A", 1, "82"},
    {"AB", 1, "8242"},
    {"A", 6, "4010"},
    {"AAAAAAAA", 0, "C16030180C0683"},
    {"AAAAAAAAA", 0, "C16030180C068341"},
    {"@@@@@@@", 0, "00000000000000"},
};

TEST(GsmAlphabet, packsAsPublished)
{
    for (const PackRow &row : packRows) {
        const auto septets = GsmAlphabet::toSeptets(QString::fromLatin1(row.text));
        ASSERT_TRUE(septets.has_value()) << row.text;
        EXPECT_EQ(GsmAlphabet::pack(*septets, row.fillBits).toHex().toUpper().toStdString(),
                  row.hex)
            << row.text << " behind " << row.fillBits << " bits";
    }
}

struct CharacterRow
{
    char16_t character;
    const char *septets;
};

// 3GPP TS 23.038, 6.2.1 and 6.2.1.1: what isn't where ASCII has it.
const CharacterRow characterRows[] = {
    {u'@', "00"},    {u'£', "01"},   {u'$', "02"},   {u'¥', "03"},   {u'è', "04"},
    {u'é', "05"},    {u'ù', "06"},   {u'ì', "07"},   {u'ò', "08"},   {u'Ç', "09"},
    {u'\n', "0a"},   {u'Ø', "0b"},   {u'ø', "0c"},   {u'\r', "0d"},  {u'Å', "0e"},
    {u'å', "0f"},    {u'Δ', "10"},   {u'_', "11"},   {u'Φ', "12"},   {u'Γ', "13"},
    {u'Λ', "14"},    {u'Ω', "15"},   {u'Π', "16"},   {u'Ψ', "17"},   {u'Σ', "18"},
    {u'Θ', "19"},    {u'Ξ', "1a"},   {u'Æ', "1c"},   {u'æ', "1d"},   {u'ß', "1e"},
    {u'É', "1f"},    {u' ', "20"},   {u'¤', "24"},   {u'?', "3f"},   {u'¡', "40"},
    {u'A', "41"},    {u'Z', "5a"},   {u'Ä', "5b"},   {u'Ö', "5c"},   {u'Ñ', "5d"},
    {u'Ü', "5e"},    {u'§', "5f"},   {u'¿', "60"},   {u'a', "61"},   {u'z', "7a"},
    {u'ä', "7b"},    {u'ö', "7c"},   {u'ñ', "7d"},   {u'ü', "7e"},   {u'à', "7f"},
    {u'\f', "1b0a"}, {u'^', "1b14"}, {u'{', "1b28"}, {u'}', "1b29"}, {u'\\', "1b2f"},
    {u'[', "1b3c"},  {u'~', "1b3d"}, {u']', "1b3e"}, {u'|', "1b40"}, {u'€', "1b65"},
};

TEST(GsmAlphabet, givesEachCharacterItsPlace)
{
    for (const CharacterRow &row : characterRows) {
        const auto septets = GsmAlphabet::toSeptets(QStringView(&row.character, 1));
        ASSERT_TRUE(septets.has_value()) << std::hex << int(row.character);
        EXPECT_EQ(septets->toHex().toStdString(), row.septets) << std::hex << int(row.character);
        EXPECT_EQ(GsmAlphabet::septetCount(row.character), septets->size());
    }
}

TEST(GsmAlphabet, holdsExactlyItsCharactersOfAllThatThereAre)
{
    int single = 0;
    int pairs = 0;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const int count = GsmAlphabet::septetCount(static_cast<char16_t>(unit));
        single += count == 1 ? 1 : 0;
        pairs += count == 2 ? 1 : 0;
    }
    EXPECT_EQ(single, 127);
    EXPECT_EQ(pairs, 10);
}

TEST(GsmAlphabet, refusesWhatItDoesNotHold)
{
    for (const char16_t unit : {u'\0', u'\t', u'\x1B', u'`', u'ç', u'á', u'º', u'\u0391', u'\u2019',
                                char16_t(0xD83D), u'\uFFFD', char16_t(0xFFFF)}) {
        EXPECT_EQ(GsmAlphabet::septetCount(unit), 0) << std::hex << int(unit);
        EXPECT_FALSE(GsmAlphabet::toSeptets(QStringView(&unit, 1)).has_value());
    }
}

} // namespace

} // namespace norvane
