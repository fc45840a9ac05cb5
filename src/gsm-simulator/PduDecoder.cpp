#include "gsm-simulator/PduDecoder.h"

#include "gsm-simulator/GsmAlphabet.h"
#include "gsm-simulator/OctetReader.h"

namespace norvane {

namespace simulator {

namespace {

constexpr int maxServiceCentreLength = 11;
constexpr int maxDigits = 20;
constexpr int maxSeptets = 160;
constexpr int maxOctets = 140;

enum class TypeOfNumber { International = 1, Alphanumeric = 5 };

TypeOfNumber typeOfNumber(int typeOfAddress)
{
    return static_cast<TypeOfNumber>((typeOfAddress >> 4) & 0x07);
}

/// semiOctetDigits in semi-octets, low half first; an odd last one is filled with F.
std::optional<QString> digitsOf(const QByteArray &octets, int count)
{
    static constexpr std::u16string_view semiOctetDigits = u"0123456789*#abc";
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

std::optional<PduFault> skipServiceCentre(OctetReader &reader)
{
    const int length = reader.octet();
    if (length == 0)
        return std::nullopt;
    if (length < 2 || length > maxServiceCentreLength)
        return PduFault::BadServiceCentre;
    const int type = reader.octet();
    const QByteArray digits = reader.octets(length - 1);
    if (reader.failed())
        return PduFault::Truncated;
    const bool odd = (static_cast<unsigned char>(digits.back()) >> 4U) == 0x0FU;
    const int count = (length - 1) * 2 - (odd ? 1 : 0);
    if ((type & 0x80) == 0 || !digitsOf(digits, count))
        return PduFault::BadServiceCentre;
    return std::nullopt;
}

std::optional<PduFault> readDestination(OctetReader &reader, QString &number)
{
    const int count = reader.octet();
    const int type = reader.octet();
    if (reader.failed())
        return PduFault::Truncated;
    if (count < 1 || count > maxDigits || (type & 0x80) == 0)
        return PduFault::BadAddress;
    const QByteArray octets = reader.octets((count + 1) / 2);
    if (reader.failed())
        return PduFault::Truncated;
    if (typeOfNumber(type) == TypeOfNumber::Alphanumeric) {
        number = textOfSeptets(unpackSeptets(octets, 0, count * 4 / 7));
        return number.isEmpty() ? std::optional(PduFault::BadAddress) : std::nullopt;
    }
    const std::optional<QString> digits = digitsOf(octets, count);
    if (!digits)
        return PduFault::BadAddress;
    number = typeOfNumber(type) == TypeOfNumber::International ? u'+' + *digits : *digits;
    return std::nullopt;
}

/// A decimal number in two semi-octets, the tens in the low half, or -1.
int swappedDecimal(char octet)
{
    const int tens = octet & 0x0F;
    const int ones = (octet >> 4) & 0x0F;
    return tens > 9 || ones > 9 ? -1 : tens * 10 + ones;
}

bool isAbsoluteTime(const QByteArray &octets)
{
    struct Range
    {
        int low;
        int high;
    };
    static constexpr Range ranges[] = {{0, 99}, {1, 12}, {1, 31}, {0, 23}, {0, 59}, {0, 59}};
    for (int i = 0; i < 6; ++i) {
        const int value = swappedDecimal(octets.at(i));
        if (value < ranges[i].low || value > ranges[i].high)
            return false;
    }
    // The zone counts quarters of an hour; bit 3 is its sign.
    return swappedDecimal(static_cast<char>(octets.at(6) & ~0x08)) >= 0;
}

std::optional<PduFault> skipValidity(OctetReader &reader, int firstOctet)
{
    enum Format { None = 0x00, Enhanced = 0x08, Relative = 0x10, Absolute = 0x18 };
    const int format = firstOctet & 0x18;
    if (format == None)
        return std::nullopt;
    const QByteArray octets = reader.octets(format == Relative ? 1 : 7);
    if (reader.failed())
        return PduFault::Truncated;
    if (format == Absolute && !isAbsoluteTime(octets))
        return PduFault::BadValidity;
    if (format == Enhanced && (octets.front() & 0x07) > 3)
        return PduFault::BadValidity;
    return std::nullopt;
}

std::optional<PduFault> readHeaderElement(int identifier, const QByteArray &content,
                                          SubmittedPart &part)
{
    constexpr int shortReference = 0x00;
    constexpr int longReference = 0x08;
    constexpr int singleShift = 0x24;
    constexpr int lockingShift = 0x25;
    if (identifier == singleShift || identifier == lockingShift)
        return PduFault::BadHeader; // an alphabet that this modem hasn't got
    if (identifier != shortReference && identifier != longReference)
        return std::nullopt;
    OctetReader reader(content);
    Concatenation found;
    found.reference = reader.octet();
    if (identifier == longReference)
        found.reference = found.reference * 256 + reader.octet();
    found.parts = reader.octet();
    found.part = reader.octet();
    if (reader.failed() || !reader.atEnd() || found.part < 1 || found.part > found.parts)
        return PduFault::BadHeader;
    part.concatenation = found;
    return std::nullopt;
}

std::optional<PduFault> readHeader(const QByteArray &header, SubmittedPart &part)
{
    OctetReader reader(header);
    while (!reader.atEnd()) {
        const int identifier = reader.octet();
        const QByteArray content = reader.octets(reader.octet());
        if (reader.failed())
            return PduFault::BadHeader;
        if (const auto fault = readHeaderElement(identifier, content, part))
            return fault;
    }
    return std::nullopt;
}

std::optional<PduFault> readText(const UserData &data, int headerOctets, SubmittedPart &part)
{
    if (data.coding == Coding::Gsm7) {
        const int headerSeptets = (headerOctets * 8 + 6) / 7;
        if (headerSeptets > data.length)
            return PduFault::BadUserData;
        const int fillBits = headerSeptets * 7 - headerOctets * 8;
        part.text = textOfSeptets(
            unpackSeptets(data.octets.mid(headerOctets), fillBits, data.length - headerSeptets));
        return std::nullopt;
    }
    const QByteArray octets = data.octets.mid(headerOctets);
    if (data.coding == Coding::Octets) {
        part.text = QString::fromLatin1(octets);
        return std::nullopt;
    }
    if (octets.size() % 2 != 0)
        return PduFault::BadUserData;
    part.text.clear();
    part.text.reserve(octets.size() / 2);
    for (qsizetype i = 0; i < octets.size(); i += 2)
        part.text += QChar(static_cast<uchar>(octets.at(i + 1)), static_cast<uchar>(octets.at(i)));
    return std::nullopt;
}

std::optional<PduFault> readSubmit(OctetReader &reader, SubmittedPart &part)
{
    constexpr int headerIndicator = 0x40;
    const int firstOctet = reader.octet();
    reader.octet(); // the message reference, which the modem gives anew
    if (reader.failed())
        return PduFault::Truncated;
    if ((firstOctet & 0x03) != 0x01)
        return PduFault::NotSubmit;
    if (const auto fault = readDestination(reader, part.number))
        return fault;
    reader.octet(); // the protocol identifier
    const std::optional<Coding> coding = codingOf(reader.octet());
    if (reader.failed())
        return PduFault::Truncated;
    if (!coding)
        return PduFault::BadCoding;
    if (const auto fault = skipValidity(reader, firstOctet))
        return fault;
    UserData data;
    data.coding = *coding;
    data.hasHeader = (firstOctet & headerIndicator) != 0;
    data.length = reader.octet();
    data.octets =
        reader.octets(data.coding == Coding::Gsm7 ? (data.length * 7 + 7) / 8 : data.length);
    if (reader.failed())
        return PduFault::Truncated;
    if (!reader.atEnd())
        return PduFault::TrailingOctets;
    return decodeUserData(data, part);
}

} // namespace

std::optional<Coding> codingOf(int dataCodingScheme)
{
    const int group = (dataCodingScheme >> 4) & 0x0F;
    if (group <= 0x07) {
        constexpr int compressed = 0x20;
        if ((dataCodingScheme & compressed) != 0)
            return std::nullopt;
        switch ((dataCodingScheme >> 2) & 0x03) {
        case 0:
            return Coding::Gsm7;
        case 1:
            return Coding::Octets;
        case 2:
            return Coding::Ucs2;
        default:
            return std::nullopt;
        }
    }
    if (group == 0x0C || group == 0x0D)
        return Coding::Gsm7;
    if (group == 0x0E)
        return Coding::Ucs2;
    if (group == 0x0F && (dataCodingScheme & 0x08) == 0)
        return (dataCodingScheme & 0x04) != 0 ? Coding::Octets : Coding::Gsm7;
    return std::nullopt;
}

std::optional<QByteArray> octetsOfHexadecimal(const QByteArray &digits)
{
    if (digits.size() % 2 != 0)
        return std::nullopt;
    for (const char digit : digits) {
        const bool decimal = digit >= '0' && digit <= '9';
        const bool letter = (digit >= 'A' && digit <= 'F') || (digit >= 'a' && digit <= 'f');
        if (!decimal && !letter)
            return std::nullopt;
    }
    return QByteArray::fromHex(digits);
}

std::optional<PduFault> decodeUserData(const UserData &data, SubmittedPart &part)
{
    if (data.length > (data.coding == Coding::Gsm7 ? maxSeptets : maxOctets))
        return PduFault::BadUserData;
    part.coding = data.coding;
    part.hasHeader = data.hasHeader;
    int headerOctets = 0;
    if (data.hasHeader) {
        OctetReader reader(data.octets);
        const int length = reader.octet();
        const QByteArray header = reader.octets(length);
        if (reader.failed())
            return PduFault::BadHeader;
        if (const auto fault = readHeader(header, part))
            return fault;
        headerOctets = length + 1;
    }
    return readText(data, headerOctets, part);
}

std::variant<SubmittedPart, PduFault> decodeSubmission(const QByteArray &hexadecimal,
                                                       int tpduLength)
{
    const std::optional<QByteArray> octets = octetsOfHexadecimal(hexadecimal);
    if (!octets)
        return PduFault::NotHexadecimal;
    if (octets->isEmpty())
        return PduFault::Truncated;
    const int serviceCentre = 1 + static_cast<unsigned char>(octets->front());
    if (octets->size() != serviceCentre + tpduLength)
        return PduFault::WrongLength;
    OctetReader reader(*octets);
    if (const auto fault = skipServiceCentre(reader))
        return *fault;
    SubmittedPart part;
    part.pdu = hexadecimal.toUpper();
    if (const auto fault = readSubmit(reader, part))
        return *fault;
    return part;
}

} // namespace simulator

} // namespace norvane
