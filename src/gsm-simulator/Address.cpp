#include "gsm-simulator/Address.h"

#include "gsm-simulator/GsmAlphabet.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr int maxDigits = 20;
constexpr std::u16string_view semiOctetDigits = u"0123456789*#abc";

} // namespace

std::optional<QString> digitsOfSemiOctets(const QByteArray &octets, int count)
{
    QString digits;
    for (int i = 0; i < count; ++i) {
        const auto octet = static_cast<unsigned char>(octets.at(i / 2));
        const unsigned digit = i % 2 == 0 ? octet & 0x0FU : octet >> 4U;
        if (digit >= semiOctetDigits.size())
            return std::nullopt;
        digits += QChar(semiOctetDigits[digit]);
    }
    if (count % 2 == 1 && (static_cast<unsigned char>(octets.back()) >> 4U) != 0x0FU)
        return std::nullopt;
    return digits;
}

std::optional<QByteArray> semiOctetsOfDigits(const QString &digits)
{
    constexpr unsigned fill = 0xF0;
    QByteArray octets;
    for (qsizetype i = 0; i < digits.size(); ++i) {
        const std::size_t digit = semiOctetDigits.find(digits.at(i).unicode());
        if (digit == std::u16string_view::npos)
            return std::nullopt;
        if (i % 2 == 0) {
            octets += static_cast<char>(fill | digit);
        } else {
            octets.back() = static_cast<char>((octets.back() & 0x0F) | (digit << 4U));
        }
    }
    return octets;
}

std::optional<PduFault> readAddress(OctetReader &reader, Address &address)
{
    const int count = reader.octet();
    address.type = reader.octet();
    if (reader.failed())
        return PduFault::Truncated;
    if (count < 1 || count > maxDigits || (address.type & 0x80) == 0)
        return PduFault::BadAddress;
    const QByteArray octets = reader.octets((count + 1) / 2);
    if (reader.failed())
        return PduFault::Truncated;
    if (address.isAlphanumeric()) {
        address.text = textOfSeptets(unpackSeptets(octets, 0, count * 4 / 7));
        return address.text.isEmpty() ? std::optional(PduFault::BadAddress) : std::nullopt;
    }
    const std::optional<QString> digits = digitsOfSemiOctets(octets, count);
    if (!digits)
        return PduFault::BadAddress;
    address.text = address.isInternational() ? u'+' + *digits : *digits;
    return std::nullopt;
}

std::optional<QByteArray> addressField(const Address &address)
{
    std::optional<QByteArray> value;
    qsizetype count = 0;
    if (address.isAlphanumeric()) {
        const std::optional<QByteArray> septets = septetsOfText(address.text);
        if (!septets)
            return std::nullopt;
        value = packSeptets(*septets, 0);
        count = (septets->size() * 7 + 3) / 4;
    } else {
        const QString digits = address.text.startsWith(u'+') ? address.text.mid(1) : address.text;
        value = semiOctetsOfDigits(digits);
        count = digits.size();
    }
    if (!value || count < 1 || count > maxDigits)
        return std::nullopt;
    return QByteArray(1, static_cast<char>(count)) + static_cast<char>(address.type) + *value;
}

QByteArray serviceCentreField(const QByteArray &number)
{
    const bool international = number.startsWith('+');
    const QString digits = QString::fromLatin1(international ? number.mid(1) : number);
    const std::optional<QByteArray> value = semiOctetsOfDigits(digits);
    if (!value || digits.isEmpty() || digits.size() > maxDigits)
        return QByteArray(1, '\0');
    return QByteArray(1, static_cast<char>(value->size() + 1)) +
           static_cast<char>(international ? Address::internationalType : Address::unknownType) +
           *value;
}

} // namespace simulator

} // namespace norvane
