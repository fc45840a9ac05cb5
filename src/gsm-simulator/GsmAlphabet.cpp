#include "gsm-simulator/GsmAlphabet.h"

#include <string_view>
#include <vector>

namespace norvane {

namespace simulator {

namespace {

constexpr char escape = 0x1B;

constexpr std::u16string_view defaultTable = u"@£$¥èéùìòÇ\nØø\rÅå"
                                             u"Δ_ΦΓΛΩΠΨΣΘΞ\u00A0ÆæßÉ"
                                             u" !\"#¤%&'()*+,-./"
                                             u"0123456789:;<=>?"
                                             u"¡ABCDEFGHIJKLMNO"
                                             u"PQRSTUVWXYZÄÖÑÜ§"
                                             u"¿abcdefghijklmno"
                                             u"pqrstuvwxyzäöñüà";
static_assert(defaultTable.size() == 128);

constexpr std::u16string_view portugueseTable = u"@£$¥êéúíóç\nÔô\rÁá"
                                                u"Δ_ªÇÀ∞^\\€Ó|\u00A0ÂâÊÉ"
                                                u" !\"#º%&'()*+,-./"
                                                u"0123456789:;<=>?"
                                                u"ÍABCDEFGHIJKLMNO"
                                                u"PQRSTUVWXYZÃÕÚÜ§"
                                                u"~abcdefghijklmno"
                                                u"pqrstuvwxyzãõ`üà";
static_assert(portugueseTable.size() == 128);

struct Extended
{
    char septet;
    char16_t character;
};

using ExtensionTable = std::vector<Extended>;

const ExtensionTable &extensionTable(Language language)
{
    static const ExtensionTable common{{0x0A, u'\f'}, {0x14, u'^'}, {0x28, u'{'}, {0x29, u'}'},
                                       {0x2F, u'\\'}, {0x3C, u'['}, {0x3D, u'~'}, {0x3E, u']'},
                                       {0x40, u'|'},  {0x65, u'€'}};
    static const auto withCommon = [](ExtensionTable own) {
        own.insert(own.end(), common.begin(), common.end());
        return own;
    };
    static const ExtensionTable spanish = withCommon({{0x09, u'ç'},
                                                      {0x41, u'Á'},
                                                      {0x49, u'Í'},
                                                      {0x4F, u'Ó'},
                                                      {0x55, u'Ú'},
                                                      {0x61, u'á'},
                                                      {0x69, u'í'},
                                                      {0x6F, u'ó'},
                                                      {0x75, u'ú'}});
    static const ExtensionTable portuguese = withCommon(
        {{0x05, u'ê'}, {0x09, u'ç'}, {0x0B, u'Ô'}, {0x0C, u'ô'}, {0x0E, u'Á'}, {0x0F, u'á'},
         {0x12, u'Φ'}, {0x13, u'Γ'}, {0x15, u'Ω'}, {0x16, u'Π'}, {0x17, u'Ψ'}, {0x18, u'Σ'},
         {0x19, u'Θ'}, {0x1F, u'Ê'}, {0x41, u'À'}, {0x49, u'Í'}, {0x4F, u'Ó'}, {0x55, u'Ú'},
         {0x5B, u'Ã'}, {0x5C, u'Õ'}, {0x61, u'Â'}, {0x69, u'í'}, {0x6F, u'ó'}, {0x75, u'ú'},
         {0x7B, u'ã'}, {0x7C, u'õ'}, {0x7F, u'â'}});
    switch (language) {
    case Language::Spanish:
        return spanish;
    case Language::Portuguese:
        return portuguese;
    default:
        return common;
    }
}

std::u16string_view mainTable(Language language)
{
    return language == Language::Portuguese ? portugueseTable : defaultTable;
}

char16_t escapedCharacter(char septet, const Alphabet &alphabet)
{
    if (septet == escape)
        return u' ';
    for (const Extended &entry : extensionTable(alphabet.single)) {
        if (entry.septet == septet)
            return entry.character;
    }
    return mainTable(alphabet.locking)[static_cast<std::size_t>(septet & 0x7F)];
}

/// The septets of one character, none if it stands in neither table.
QByteArray septetsOf(char16_t character, const Alphabet &alphabet)
{
    // Position 0x1B of each main table is the escape itself and stands for no character.
    const std::size_t position = mainTable(alphabet.locking).find(character);
    if (position != std::u16string_view::npos && position != static_cast<std::size_t>(escape))
        return QByteArray(1, static_cast<char>(position));
    for (const Extended &entry : extensionTable(alphabet.single)) {
        if (entry.character == character)
            return QByteArray(1, escape) + entry.septet;
    }
    return {};
}

} // namespace

QString textOfSeptets(const QByteArray &septets, const Alphabet &alphabet)
{
    const std::u16string_view table = mainTable(alphabet.locking);
    QString text;
    text.reserve(septets.size());
    for (qsizetype i = 0; i < septets.size(); ++i) {
        const char septet = septets.at(i);
        if (septet != escape) {
            text += QChar(table[static_cast<std::size_t>(septet & 0x7F)]);
        } else if (i + 1 < septets.size()) {
            text += QChar(escapedCharacter(septets.at(++i), alphabet));
        } else {
            text += QLatin1Char(' ');
        }
    }
    return text;
}

QByteArray unpackSeptets(const QByteArray &packed, int fillBits, int count)
{
    QByteArray septets(count, '\0');
    for (int i = 0; i < count; ++i) {
        const int firstBit = fillBits + 7 * i;
        const int octet = firstBit / 8;
        const int shift = firstBit % 8;
        unsigned bits = static_cast<unsigned char>(packed.at(octet));
        if (shift > 1)
            bits |= static_cast<unsigned>(static_cast<unsigned char>(packed.at(octet + 1))) << 8U;
        septets[i] = static_cast<char>((bits >> static_cast<unsigned>(shift)) & 0x7FU);
    }
    return septets;
}

std::optional<QByteArray> septetsOfText(const QString &text, const Alphabet &alphabet)
{
    QByteArray all;
    for (const QChar character : text) {
        const QByteArray septets = septetsOf(character.unicode(), alphabet);
        if (septets.isEmpty())
            return std::nullopt;
        all += septets;
    }
    return all;
}

QByteArray packSeptets(const QByteArray &septets, int fillBits)
{
    QByteArray packed((septets.size() * 7 + fillBits + 7) / 8, '\0');
    for (qsizetype i = 0; i < septets.size(); ++i) {
        const qsizetype firstBit = fillBits + 7 * i;
        const auto bits = static_cast<unsigned>(septets.at(i) & 0x7F)
                          << static_cast<unsigned>(firstBit % 8);
        const qsizetype octet = firstBit / 8;
        packed[octet] = static_cast<char>(packed.at(octet) | static_cast<char>(bits & 0xFFU));
        if (bits > 0xFFU)
            packed[octet + 1] = static_cast<char>(bits >> 8U);
    }
    return packed;
}

std::optional<int> septetsNeeded(const QString &text)
{
    const std::optional<QByteArray> septets = septetsOfText(text);
    return septets ? std::optional(static_cast<int>(septets->size())) : std::nullopt;
}

} // namespace simulator

} // namespace norvane
