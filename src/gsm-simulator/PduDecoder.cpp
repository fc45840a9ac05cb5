#include "gsm-simulator/PduDecoder.h"

#include "gsm-simulator/GsmAlphabet.h"
#include "gsm-simulator/OctetReader.h"
#include "gsm-simulator/Timestamp.h"

namespace norvane {

namespace simulator {

namespace {

constexpr int maxServiceCentreLength = 11;

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
    if ((type & 0x80) == 0 || !digitsOfSemiOctets(digits, count))
        return PduFault::BadServiceCentre;
    return std::nullopt;
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
    if (format == Absolute && !isTimestamp(octets))
        return PduFault::BadValidity;
    if (format == Enhanced && (octets.front() & 0x07) > 3)
        return PduFault::BadValidity;
    return std::nullopt;
}

/// One of the languages whose tables this modem has.
std::optional<PduFault> readLanguage(const QByteArray &content, Language &language)
{
    if (content.size() != 1)
        return PduFault::BadHeader;
    language = static_cast<Language>(content.front());
    const bool known = language == Language::Spanish || language == Language::Portuguese;
    return known ? std::nullopt : std::optional(PduFault::BadHeader);
}

std::optional<PduFault> readHeaderElement(int identifier, const QByteArray &content,
                                          SubmittedPart &part)
{
    constexpr int shortReference = 0x00;
    constexpr int longReference = 0x08;
    constexpr int singleShift = 0x24;
    constexpr int lockingShift = 0x25;
    if (identifier == singleShift)
        return readLanguage(content, part.alphabet.single);
    if (identifier == lockingShift)
        return readLanguage(content, part.alphabet.locking);
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
            unpackSeptets(data.octets.mid(headerOctets), fillBits, data.length - headerSeptets),
            part.alphabet);
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
    constexpr int reportRequest = 0x20;
    const int firstOctet = reader.octet();
    reader.octet(); // the message reference, which the modem gives anew
    if (reader.failed())
        return PduFault::Truncated;
    if ((firstOctet & 0x03) != 0x01)
        return PduFault::BadType;
    Address recipient;
    if (const auto fault = readAddress(reader, recipient))
        return fault;
    part.number = recipient.text;
    part.typeOfNumber = recipient.type;
    part.reportRequested = (firstOctet & reportRequest) != 0;
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
    if (const auto fault = readUserData(reader, data))
        return fault;
    return decodeUserData(data, part);
}

} // namespace

std::optional<PduFault> readUserData(OctetReader &reader, UserData &data)
{
    data.length = reader.octet();
    data.octets =
        reader.octets(data.coding == Coding::Gsm7 ? (data.length * 7 + 7) / 8 : data.length);
    if (reader.failed())
        return PduFault::Truncated;
    return reader.atEnd() ? std::nullopt : std::optional(PduFault::TrailingOctets);
}

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

std::optional<int> headerOctetsOf(const UserData &data)
{
    if (!data.hasHeader)
        return 0;
    if (data.octets.isEmpty())
        return std::nullopt;
    const int octets = 1 + static_cast<unsigned char>(data.octets.front());
    return octets <= data.octets.size() ? std::optional(octets) : std::nullopt;
}

std::optional<PduFault> decodeUserData(const UserData &data, SubmittedPart &part)
{
    if (data.length > data.maxLength())
        return PduFault::BadUserData;
    part.coding = data.coding;
    part.hasHeader = data.hasHeader;
    const std::optional<int> headerOctets = headerOctetsOf(data);
    if (!headerOctets)
        return PduFault::BadHeader;
    if (*headerOctets > 0) {
        if (const auto fault = readHeader(data.octets.mid(1, *headerOctets - 1), part))
            return fault;
    }
    return readText(data, *headerOctets, part);
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
