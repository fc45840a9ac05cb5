#include "gsm-simulator/MessageLines.h"

#include "gsm-simulator/GsmAlphabet.h"
#include "gsm-simulator/MessageMemory.h"
#include "gsm-simulator/ModemState.h"
#include "gsm-simulator/TextCoding.h"
#include "gsm-simulator/Timestamp.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

const QByteArray responseEnd = "\r\n"_ba;

bool isTextMode(const Profile &profile)
{
    return profile.textFormat == 1;
}

QByteArray digitsOf(const QByteArray &octets)
{
    return octets.toHex().toUpper();
}

QByteArray quotedText(const QString &text, const Profile &profile)
{
    return '"' + inCharacterSet(text, profile.characterSet) + '"';
}

QByteArray lengthAndPdu(const QByteArray &tpdu, const Profile &profile)
{
    return QByteArray::number(tpdu.size()) + responseEnd +
           digitsOf(serviceCentreField(profile.serviceCentre) + tpdu);
}

/// Text where the message is text of the default alphabet alone, otherwise its octets.
QByteArray dataLine(const UserData &data, const Profile &profile)
{
    if (data.coding != Coding::Gsm7 || data.hasHeader)
        return digitsOf(data.octets);
    return inCharacterSet(textOfSeptets(unpackSeptets(data.octets, 0, data.length)),
                          profile.characterSet);
}

QByteArray reportFields(const ReceivedPdu &pdu, const Profile &profile)
{
    return QByteArray::number(pdu.firstOctet) + ',' + QByteArray::number(pdu.reference) + ',' +
           quotedText(pdu.address.text, profile) + ',' + QByteArray::number(pdu.address.type) +
           ",\"" + timestampText(pdu.timestamp) + "\",\"" + timestampText(pdu.discharged) + "\"," +
           QByteArray::number(pdu.status);
}

/// What +CSDH=1 adds to a message that is read or routed.
QByteArray details(const ReceivedPdu &pdu, const Profile &profile)
{
    const bool international = profile.serviceCentre.startsWith('+');
    QByteArray fields;
    for (const int value : {pdu.address.type, pdu.firstOctet, pdu.protocol, pdu.dataCodingScheme})
        fields += ',' + QByteArray::number(value);
    fields += ',' + quotedText(QString::fromLatin1(profile.serviceCentre), profile) + ',' +
              QByteArray::number(international ? Address::internationalType : Address::unknownType);
    return fields + ',' + QByteArray::number(pdu.userData.length);
}

QByteArray timeOf(const ReceivedPdu &pdu)
{
    return ",\"" + timestampText(pdu.timestamp) + '"';
}

QByteArray stateOf(const StoredMessage &message, const Profile &profile)
{
    if (isTextMode(profile))
        return message.isRead ? "\"REC READ\""_ba : "\"REC UNREAD\""_ba;
    return message.isRead ? "1"_ba : "0"_ba;
}

ReceivedPdu pduOf(const StoredMessage &message)
{
    // Nothing is stored that can't be read.
    return std::get<ReceivedPdu>(readReceived(message.tpdu));
}

} // namespace

QByteArray deliveryLine(const QByteArray &tpdu, const ReceivedPdu &pdu, const Profile &profile)
{
    if (!isTextMode(profile))
        return "+CMT: ," + lengthAndPdu(tpdu, profile);
    const QByteArray more = profile.showDetails == 1 ? details(pdu, profile) : QByteArray();
    return "+CMT: " + quotedText(pdu.address.text, profile) + ',' + timeOf(pdu) + more +
           responseEnd + dataLine(pdu.userData, profile);
}

QByteArray reportLine(const QByteArray &tpdu, const ReceivedPdu &pdu, const Profile &profile)
{
    return "+CDS: " +
           (isTextMode(profile) ? reportFields(pdu, profile) : lengthAndPdu(tpdu, profile));
}

QByteArray listEntry(int place, const StoredMessage &message, const Profile &profile)
{
    const QByteArray start =
        "+CMGL: " + QByteArray::number(place) + ',' + stateOf(message, profile) + ',';
    if (!isTextMode(profile))
        return start + ',' + lengthAndPdu(message.tpdu, profile);
    const ReceivedPdu pdu = pduOf(message);
    if (pdu.type == ReceivedPdu::Type::StatusReport)
        return start + reportFields(pdu, profile);
    QByteArray more;
    if (profile.showDetails == 1)
        more = ',' + QByteArray::number(pdu.address.type) + ',' +
               QByteArray::number(pdu.userData.length);
    return start + quotedText(pdu.address.text, profile) + ',' + timeOf(pdu) + more + responseEnd +
           dataLine(pdu.userData, profile);
}

QByteArray readEntry(const StoredMessage &message, const Profile &profile)
{
    const QByteArray start = "+CMGR: " + stateOf(message, profile) + ',';
    if (!isTextMode(profile))
        return start + ',' + lengthAndPdu(message.tpdu, profile);
    const ReceivedPdu pdu = pduOf(message);
    if (pdu.type == ReceivedPdu::Type::StatusReport)
        return start + reportFields(pdu, profile);
    const QByteArray more = profile.showDetails == 1 ? details(pdu, profile) : QByteArray();
    return start + quotedText(pdu.address.text, profile) + ',' + timeOf(pdu) + more + responseEnd +
           dataLine(pdu.userData, profile);
}

} // namespace simulator

} // namespace norvane
