#include "TovekSMService/modem/codec/SubmitPdu.h"

#include "TovekSMService/modem/codec/GsmAlphabet.h"
#include "TovekSMService/modem/codec/MessageText.h"
#include "TovekSMService/modem/codec/UserDataHeader.h"
#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// 3GPP TS 23.040, 9.1.2.5: an address value has at most 10 octets.
constexpr int maxDigits = 20;

/// First octet of an SMS-SUBMIT, 3GPP TS 23.040, 9.2.2.2.
constexpr int submit = 0x01;
constexpr int relativeValidity = 0x10;
constexpr int statusReportRequest = 0x20;

/// The service centre address in front of the TPDU, in hexadecimal digits.
constexpr int centreDigits = 2;

/// Types of address, 3GPP TS 23.040, 9.1.2.5, with the numbering plan of the telephone.
constexpr int internationalAddress = 0x91;
constexpr int unknownAddress = 0x81;

void appendOctet(QByteArray &octets, int value)
{
    octets.append(static_cast<char>(static_cast<quint8>(value)));
}

/// The semi-octet of an address digit, 3GPP TS 23.040, 9.1.2.3; -1 if it is none.
int semiOctet(QChar digit)
{
    static constexpr QStringView digits = u"0123456789*#abc";
    return static_cast<int>(digits.indexOf(digit));
}

/// TP-Destination-Address: length in semi-octets, type, digits in swapped semi-octets.
Result<QByteArray, EncodeError> encodeAddress(const QString &phone)
{
    const bool international = phone.startsWith(u'+');
    const QStringView digits = QStringView(phone).mid(international ? 1 : 0);
    if (digits.isEmpty())
        return failed(EncodeError::EmptyPhone);

    QByteArray semiOctets;
    for (const QChar digit : digits) {
        const int value = semiOctet(digit);
        if (value < 0)
            return failed(EncodeError::InvalidCharacters);
        appendOctet(semiOctets, value);
    }
    if (semiOctets.size() > maxDigits)
        return failed(EncodeError::NumberTooLong);

    QByteArray address;
    appendOctet(address, static_cast<int>(semiOctets.size()));
    appendOctet(address, international ? internationalAddress : unknownAddress);
    for (qsizetype i = 0; i < semiOctets.size(); i += 2) {
        const int low = semiOctets.at(i);
        const int high = i + 1 < semiOctets.size() ? semiOctets.at(i + 1) : 0x0F;
        appendOctet(address, high << 4 | low);
    }
    return address;
}

/// 3GPP TS 23.040, 9.2.3.24.8: concatenated short messages, 16-bit reference number.
QByteArray concatenationHeader(quint16 reference, int total, int number)
{
    QByteArray header;
    for (const int octet : {0x06, 0x08, 0x04, reference >> 8, reference & 0xFF, total, number})
        appendOctet(header, octet);
    return header;
}

/// TP-User-Data-Length and TP-User-Data.
QByteArray userData(Alphabet alphabet, const QString &text, const QByteArray &header)
{
    QByteArray data;
    if (alphabet == Alphabet::Gsm7) {
        const QByteArray septets = GsmAlphabet::toSeptets(text).value_or(QByteArray());
        const int headerBits = static_cast<int>(header.size()) * 8;
        const int headerSeptets = (headerBits + 6) / 7;
        appendOctet(data, headerSeptets + static_cast<int>(septets.size()));
        data += header + GsmAlphabet::pack(septets, headerSeptets * 7 - headerBits);
        return data;
    }
    appendOctet(data, static_cast<int>(header.size() + 2 * text.size()));
    data += header;
    for (const QChar unit : text) {
        appendOctet(data, unit.unicode() >> 8);
        appendOctet(data, unit.unicode() & 0xFF);
    }
    return data;
}

SubmitPart encodePart(const EncodeRequest &request, const QByteArray &address,
                      const MessageText &text, int number)
{
    const int total = static_cast<int>(text.parts.size());
    QByteArray tpdu;
    appendOctet(tpdu, submit | (request.validityPeriod ? relativeValidity : 0) |
                          (request.statusReport ? statusReportRequest : 0) |
                          (total > 1 ? userDataHeaderIndicator : 0));
    appendOctet(tpdu, 0x00); // TP-Message-Reference: the device puts its own
    tpdu += address;
    appendOctet(tpdu, 0x00);                                          // TP-Protocol-Identifier
    appendOctet(tpdu, text.alphabet == Alphabet::Gsm7 ? 0x00 : 0x08); // TP-Data-Coding-Scheme
    if (request.validityPeriod)
        appendOctet(tpdu, *request.validityPeriod);
    // Behind the lengths of user data and header, and the information element's type and length.
    const qsizetype referenceAt = total > 1 ? centreDigits + 2 * (tpdu.size() + 4) : -1;
    tpdu +=
        userData(text.alphabet, text.parts.at(number - 1),
                 total > 1 ? concatenationHeader(request.reference, total, number) : QByteArray());

    return {"00"_ba + tpdu.toHex().toUpper(),
            static_cast<int>(tpdu.size()),
            number,
            total,
            referenceAt,
            request.statusReport};
}

} // namespace

int errorCode(EncodeError error)
{
    switch (error) {
    case EncodeError::EmptyPhone:
        return ErrorCode::methodParam;
    case EncodeError::TextTooLong:
        return ErrorCode::textTooLong;
    case EncodeError::NumberTooLong:
        return ErrorCode::numberTooLong;
    case EncodeError::InvalidCharacters:
        return ErrorCode::invalidCharacters;
    }
    Q_UNREACHABLE();
}

Result<QList<SubmitPart>, EncodeError> encodeSubmit(const EncodeRequest &request)
{
    const auto address = encodeAddress(request.phone);
    if (!address)
        return failed(address.error());

    const std::optional<MessageText> text = prepareText(request.text);
    if (!text)
        return failed(EncodeError::TextTooLong);

    QList<SubmitPart> parts;
    for (int number = 1; number <= text->parts.size(); ++number)
        parts.append(encodePart(request, *address, *text, number));
    return parts;
}

SubmitPart withoutStatusReport(SubmitPart part)
{
    bool isNumber = false;
    const int first = part.hex.mid(centreDigits, 2).toInt(&isNumber, 16);
    Q_ASSERT(isNumber);
    part.hex.replace(
        centreDigits, 2,
        QByteArray::number(first & ~statusReportRequest, 16).rightJustified(2, '0').toUpper());
    part.asksForReport = false;
    return part;
}

void setReference(QList<SubmitPart> &parts, quint16 reference)
{
    const QByteArray digits = QByteArray::number(reference, 16).rightJustified(4, '0').toUpper();
    for (SubmitPart &part : parts) {
        if (part.referenceAt >= 0)
            part.hex.replace(part.referenceAt, digits.size(), digits);
    }
}

} // namespace norvane
