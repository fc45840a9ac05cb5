#include "gsm-simulator/GsmAlphabet.h"

#include <array>

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

struct Extended
{
    char septet;
    char16_t character;
};

constexpr std::array<Extended, 10> extensionTable{{{0x0A, u'\f'},
                                                   {0x14, u'^'},
                                                   {0x28, u'{'},
                                                   {0x29, u'}'},
                                                   {0x2F, u'\\'},
                                                   {0x3C, u'['},
                                                   {0x3D, u'~'},
                                                   {0x3E, u']'},
                                                   {0x40, u'|'},
                                                   {0x65, u'€'}}};

char16_t escapedCharacter(char septet)
{
    if (septet == escape)
        return u' ';
    for (const Extended &entry : extensionTable) {
        if (entry.septet == septet)
            return entry.character;
    }
    return defaultTable[static_cast<std::size_t>(septet & 0x7F)];
}

int septetsOf(char16_t character)
{
    // Position 0x1B of the default table is the escape itself and stands for no character.
    const std::size_t position = defaultTable.find(character);
    if (position != std::u16string_view::npos && position != static_cast<std::size_t>(escape))
        return 1;
    for (const Extended &entry : extensionTable) {
        if (entry.character == character)
            return 2;
    }
    return 0;
}

} // namespace

QString textOfSeptets(const QByteArray &septets)
{
    QString text;
    text.reserve(septets.size());
    for (qsizetype i = 0; i < septets.size(); ++i) {
        const char septet = septets.at(i);
        if (septet != escape) {
            text += QChar(defaultTable[static_cast<std::size_t>(septet & 0x7F)]);
        } else if (i + 1 < septets.size()) {
            text += QChar(escapedCharacter(septets.at(++i)));
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

std::optional<int> septetsNeeded(const QString &text)
{
    int total = 0;
    for (const QChar character : text) {
        const int septets = septetsOf(character.unicode());
        if (septets == 0)
            return std::nullopt;
        total += septets;
    }
    return total;
}

} // namespace simulator

} // namespace norvane
