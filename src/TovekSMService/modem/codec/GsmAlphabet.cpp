#include "TovekSMService/modem/codec/GsmAlphabet.h"

#include <array>

namespace norvane {

namespace {

constexpr char16_t escape = 0x1B;

constexpr char16_t euro = u'\u20AC';
constexpr quint8 euroSeptet = 0x65;
constexpr quint8 unknown = 0xFF;
constexpr quint8 extensionRows = 0x80;

using ReverseTable = std::array<quint8, 0x400>;

/// For each UTF-16 unit below 0x400 its septet, with the high bit set for one behind the escape.
/// The euro sign, alone beyond, is looked at by itself.
ReverseTable reverseTable()
{
    ReverseTable table{};
    table.fill(unknown);
    for (quint8 septet = 0; septet < extensionRows; ++septet) {
        const char16_t plain = ShiftTables::locking(GsmLanguage::Default, septet);
        const char16_t shifted = ShiftTables::single(GsmLanguage::Default, septet);
        if (plain < table.size())
            table[plain] = septet;
        if (shifted < table.size())
            table[shifted] = septet | extensionRows;
    }
    return table;
}

quint8 lookUp(char16_t unit)
{
    static const ReverseTable reverse = reverseTable();
    if (unit < reverse.size())
        return reverse[unit];
    return unit == euro ? euroSeptet | extensionRows : unknown;
}

} // namespace

namespace GsmAlphabet {

int septetCount(char16_t unit)
{
    const quint8 found = lookUp(unit);
    if (found == unknown)
        return 0;
    return (found & extensionRows) != 0 ? 2 : 1;
}

std::optional<QByteArray> toSeptets(QStringView text)
{
    QByteArray septets;
    septets.reserve(text.size());
    for (const QChar character : text) {
        const quint8 found = lookUp(character.unicode());
        if (found == unknown)
            return std::nullopt;
        if ((found & extensionRows) != 0)
            septets.append(static_cast<char>(escape));
        septets.append(static_cast<char>(found & ~extensionRows));
    }
    return septets;
}

QByteArray pack(const QByteArray &septets, int fillBits)
{
    Q_ASSERT(fillBits >= 0 && fillBits < 7);
    QByteArray octets;
    octets.reserve((septets.size() * 7 + fillBits + 7) / 8);
    unsigned pending = 0;
    int pendingBits = fillBits;
    for (const char septet : septets) {
        pending |= (static_cast<unsigned>(septet) & 0x7FU) << pendingBits;
        pendingBits += 7;
        if (pendingBits >= 8) {
            octets.append(static_cast<char>(pending & 0xFFU));
            pending >>= 8;
            pendingBits -= 8;
        }
    }
    if (pendingBits > 0 && !septets.isEmpty())
        octets.append(static_cast<char>(pending & 0xFFU));
    return octets;
}

QByteArray unpack(const QByteArray &octets, qsizetype count)
{
    QByteArray septets;
    septets.reserve(count);
    unsigned pending = 0;
    int pendingBits = 0;
    for (const char octet : octets) {
        if (septets.size() == count)
            break;
        pending |= static_cast<unsigned>(static_cast<quint8>(octet)) << pendingBits;
        pendingBits += 8;
        for (; pendingBits >= 7 && septets.size() < count; pendingBits -= 7, pending >>= 7)
            septets.append(static_cast<char>(pending & 0x7FU));
    }
    return septets;
}

QString fromSeptets(const QByteArray &septets, GsmLanguage locking, GsmLanguage single)
{
    QString text;
    text.reserve(septets.size());
    for (qsizetype i = 0; i < septets.size(); ++i) {
        auto septet = static_cast<quint8>(septets.at(i));
        char16_t character = ShiftTables::none;
        if (septet == escape && i + 1 < septets.size()) {
            septet = static_cast<quint8>(septets.at(++i));
            character = ShiftTables::single(single, septet);
        }
        if (character == ShiftTables::none)
            character = ShiftTables::locking(locking, septet);
        text += QChar(character == ShiftTables::none ? u' ' : character);
    }
    return text;
}

} // namespace GsmAlphabet

} // namespace norvane
