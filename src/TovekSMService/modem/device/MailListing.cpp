#include "TovekSMService/modem/device/MailListing.h"

#include "TovekSMService/modem/codec/AnswerParsers.h"
#include "TovekSMService/modem/codec/Hexadecimal.h"

namespace norvane {

namespace {

/// Kinds of +CMGL and +CMGR in PDU mode (3GPP TS 27.005, 3.1): received, unread and read. Others
/// are messages that somebody wrote with the device.
constexpr int receivedRead = 1;

} // namespace

/// Pairs of lines: what stands behind the tag, and the PDU.
MailListing MailListing::of(const QList<QByteArray> &lines, QByteArrayView tag,
                            const QByteArray &memory, int index)
{
    MailListing listing;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QList<QByteArray> fields = AnswerParsers::fields({lines.at(i)}, tag);
        if (fields.isEmpty())
            continue;
        bool isPlace = true;
        const int place = index >= 0 ? index : fields.takeFirst().toInt(&isPlace);
        const QByteArray pdu = lines.value(i + 1).trimmed();
        const QByteArray length = fields.value(fields.size() - 1);
        if (isPlace && length == "0")
            continue; // an empty place
        if (!isPlace || place < 0 || fields.isEmpty() || !isHexadecimal(pdu)) {
            listing.isGarbled = true;
            continue;
        }
        bool isNumber = false;
        const int kind = fields.constFirst().toInt(&isNumber);
        if (!isNumber || kind < 0 || kind > receivedRead)
            listing.isAllReceived = false;
        else if (isTruncated(pdu, length))
            listing.truncated.append({pdu, memory, place});
        else
            listing.arrivals.append({pdu, memory, place});
        ++i;
    }
    return listing;
}

bool isTruncated(const QByteArray &pdu, const QByteArray &length)
{
    bool isNumber = false;
    const int octets = length.toInt(&isNumber);
    const int addressOctets = pdu.left(2).toInt(nullptr, 16);
    return isNumber && pdu.size() / 2 < 1 + addressOctets + octets;
}

} // namespace norvane
